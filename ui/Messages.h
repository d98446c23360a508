// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>

// The texts of the editor's message boxes, built in one place so tests compare them exactly.
namespace Messages {

inline QString folderNotFound()
{
    return QStringLiteral("That folder does not exist, please try again.");
}

inline QString folderMissing(const QString &folder)
{
    return QStringLiteral("The folder '") + folder + QStringLiteral("' does not exist.");
}

inline QString fileMissing(const QString &file)
{
    return QStringLiteral("The file '") + file + QStringLiteral("' does not exist.");
}

// Added to the messages about a missing game folder or family list: where the data folder is set.
inline QString dataFolderHint()
{
    return QStringLiteral("\n\nChoose the game's data folder with Settings > Manage Directories > Decompiled Data.");
}

// Shown in the window at a start without the game's data folder.
inline QString firstStart()
{
    return QStringLiteral("To begin, choose the game's unpacked data folder (the one holding Scripts and Weapon). "
                          "Then open a weapon script with File > Open.");
}

// A path from the command line or a drop that names no file.
inline QString notAScript(const QString &path)
{
    return QStringLiteral("'") + path + QStringLiteral("' is not a weapon script: only .wepn files can be opened.");
}

// The tip of a drop-down item that shows a script's value the editor does not offer.
inline QString scriptsOwnItem()
{
    return QStringLiteral("The script's own value, kept as it is.");
}

inline QString recentMissing(const QString &path)
{
    return fileMissing(path) + QStringLiteral(" It was taken off File > Open Recent.");
}

inline QString saveChanges(const QString &name)
{
    return QStringLiteral("Save changes to ") + name + QLatin1Char('?');
}

inline QString familyListMissing()
{
    return QStringLiteral("Please locate your 'familylist.lua' file before opening a weapon for modification.");
}

inline QString familyListMissingTitle()
{
    return QStringLiteral("Missing familylist.lua");
}

inline QString unrecognizedFireType(const QString &fireType)
{
    return QStringLiteral("Unrecognized weapon type: '") + fireType + QStringLiteral("' -- Please notify Pellor.");
}

// A script that was chosen but cannot be read; reason says where and why ("Line 12: ...").
inline QString cannotOpen(const QString &path, const QString &reason)
{
    return QStringLiteral("Cannot open '") + path + QStringLiteral("': ") + reason;
}

// The first things a save would change in what the game reads from a script just opened.
inline QString saveChangesWhatTheGameReads(const QString &path, const QStringList &changes, int notListed)
{
    QString text = QStringLiteral("Saving '") + path + QStringLiteral("' may change what the game reads from it:\n\n")
                   + changes.join(QLatin1Char('\n'));
    if (notListed > 0)
        text += QStringLiteral("\n... and %1 more (vantorel-cli check lists them all).").arg(notListed);
    return text;
}

inline QString familiesOutOfStep()
{
    return QStringLiteral("The penetration and accuracy lists were reloaded from the family list by an Open that did "
                          "not finish, and no longer match this script's family values, so saving could lose or "
                          "misplace them. Open the script again, then save.");
}

// Before a save over the script that was read or last saved, when another program changed it since.
inline QString changedOnDisk(const QString &path)
{
    return QStringLiteral("'") + path
           + QStringLiteral("' was changed on disk after the editor read it. Saving replaces those changes with "
                            "the window's values.\n\nReplace it anyway?");
}

// Next to a number field whose key filter dropped a typed character.
inline QString wholeNumbersOnly()
{
    return QStringLiteral("Whole numbers only: this field takes the digits 0 to 9.");
}

inline QString numbersOnly()
{
    return QStringLiteral("Numbers only: digits, a point, a sign and an exponent (1.5E-2).");
}

// Said once, after wholeNumbersOnly: where decimals and signs can be typed.
inline QString wholeNumbersHint()
{
    return QStringLiteral("For decimals and signs, choose Settings > Read Scripts as the Game Does and open the "
                          "script again.");
}

inline QString savedTo(const QString &path)
{
    return QStringLiteral("Successfully saved to '") + path + QLatin1Char('\'');
}

inline QString unknownCondition(const QString &condition)
{
    return QStringLiteral("Unknown condition '") + condition + QLatin1Char('\'');
}

inline QString unknownEffect(const QString &effect)
{
    return QStringLiteral("Unknown effect '") + effect + QLatin1Char('\'');
}

inline QString accuracyOutOfRange()
{
    return QStringLiteral("Accuracy must be a value between 1 and 0.");
}

// A field whose text CollectDocument cannot take. label is the field's label without its colon;
// expected says what it must hold, e.g. "a number".
inline QString fieldNotTaken(const QString &label, const QString &text, const QString &expected)
{
    return QStringLiteral("\"") + label + QStringLiteral("\" must hold ") + expected + QStringLiteral(", not \"")
           + text + QStringLiteral("\". Nothing was changed.");
}

// Read as the game reads it, a script whose text the editor cannot keep when it saves changes.
inline QString gameTextNotKept(const QString &path, const QString &reasons)
{
    return QStringLiteral("The editor reads '") + path
           + QStringLiteral("' as the game does, but cannot keep its text when you save changes:\n") + reasons
           + QStringLiteral("\nSuch a save asks before it writes the editor's normalised form.");
}

inline QString saveNormalised(const QString &path, const QString &reasons)
{
    return QStringLiteral("Your changes cannot be written into the text of '") + path + QStringLiteral("':\n")
           + reasons
           + QStringLiteral("\nSave it in the editor's normalised form? Its comments, blank lines and layout will "
                            "be lost.");
}

} // namespace Messages
