// SPDX-License-Identifier: MIT
// File > Open and File > Save As.
#include "WepnEditor_Main.h"

#include "AppInfo.h"
#include "AtomicFile.h"
#include "EditorReading.h"
#include "FamilyList.h"
#include "GameCompare.h"
#include "GameReading.h"
#include "GameView.h"
#include "Latin1.h"
#include "Messages.h"
#include "NumberText.h"
#include "PathText.h"
#include "ScriptWriter.h"
#include "TextPieces.h"

#include <QAction>
#include <QComboBox>
#include <QDir>
#include <QFileInfo>
#include <QGroupBox>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPushButton>
#include <QSettings>

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace {

// Which of Value(3), Value(5), Value(6), Value(7), Value(16) and cboFireAxis apply to a fire type.
struct FireTypeFields
{
    std::string_view fireType;
    bool velocity, blastRadius, fireDuration, anticipation, passThruHealth, fireAxis;
};

constexpr FireTypeFields kFireTypes[] = {
    {"instanthit", false, false, true, true, true, false},
    {"bullet", true, false, false, false, false, false},
    {"mine", true, false, false, false, false, false},
    {"missile", true, false, false, false, false, true},
    {"sphereburst", true, true, false, false, false, false},
};

// File > Open Recent: how many scripts, and where the settings keep them.
constexpr qsizetype kRecentScripts = 8;
const QString kRecentKey = QStringLiteral("Recent/Scripts");

} // namespace

// The caption names the file by its file-system name; the title part is plain ASCII.
static QString documentCaption(const CustomFSO &fso, const std::string &path)
{
    return Latin1::toQString(AppInfo::documentCaption({})) + PathText::toQString(fso.GetFileName(path));
}

// Read as the game reads it, an attack family that the script's setAccuracy does not name has the
// statement's default accuracy, not the 1 the editor's dialect gives it.
static void fillUnnamedAccuracies(EditorDocument &document, std::string_view bytes)
{
    const GameView::Run run = GameView::RunScript(bytes);
    const auto last = std::find_if(run.calls.rbegin(), run.calls.rend(),
                                   [](const GameView::Call &call) { return call.name == "setAccuracy"; });
    if (last == run.calls.rend() || last->arguments.size() < 2
        || last->arguments[1].kind != GameView::Value::Kind::Number)
        return;
    const std::string accuracy = NumberText::realText(last->arguments[1].number);
    for (std::string &entry : document.lstAccuracy) {
        const std::vector<std::string> pieces = EntryPieces(entry);
        if (pieces.size() == 2 && pieces[1] == "N")
            entry = pieces[0] + std::string(kEntrySeparator) + accuracy + std::string(kEntrySeparator) + "0";
    }
}

// Before a file is chosen every failure ends here. A loaded script stays loaded and saveable;
// without one, nothing may be added, removed or saved.
void WepnEditor_Main::openFailed()
{
    if (intLoaded != 0)
        return;
    cmdAdd->setEnabled(false);
    cmdRemove->setEnabled(false);
    Save->setEnabled(false);
}

bool WepnEditor_Main::prepareOpen()
{
    if (!FSO.FolderExists(strWFDir)) {
        dialogs().message(Messages::folderMissing(PathText::toQString(strWFDir)) + Messages::dataFolderHint(), {});
        return false;
    }
    if (!FSO.FileExists(strFLFile)) {
        dialogs().message(Messages::fileMissing(PathText::toQString(strFLFile)) + Messages::dataFolderHint(), {});
        return false;
    }
    return LoadWeaponEffects() && LoadFamilyList();
}

void WepnEditor_Main::Open_Click()
{
    if (!resolveUnsavedChanges())
        return;
    if (!prepareOpen())
        return openFailed();

    const std::optional<QString> chosen
        = dialogs().openFile(PathText::toQString(strWEPNDir), scriptFileFilter(), QStringLiteral("*.wepn"));
    if (!chosen)
        return openFailed();
    openChosenScript(*chosen);
}

bool WepnEditor_Main::OpenPath(const QString &path)
{
    const QFileInfo file(path);
    if (!file.exists()) {
        dialogs().message(Messages::fileMissing(path), {});
        return false;
    }
    if (!file.isFile() || file.suffix().compare(QStringLiteral("wepn"), Qt::CaseInsensitive) != 0) {
        dialogs().message(Messages::notAScript(path), {});
        return false;
    }
    if (!resolveUnsavedChanges())
        return false;
    if (!prepareOpen()) {
        openFailed();
        return false;
    }
    openChosenScript(file.absoluteFilePath());
    return intLoaded == 1;
}

QStringList WepnEditor_Main::recentScripts() const
{
    return m_settings.value(kRecentKey).toStringList();
}

void WepnEditor_Main::rememberRecent(const QString &path)
{
    QStringList paths = recentScripts();
    paths.removeAll(path);
    paths.prepend(path);
    while (paths.size() > kRecentScripts)
        paths.removeLast();
    m_settings.setValue(kRecentKey, paths);
    showRecent(paths);
}

void WepnEditor_Main::showRecent(const QStringList &paths)
{
    OpenRecent->clear();
    for (qsizetype i = 0; i < paths.size(); ++i) {
        QAction *entry = OpenRecent->addAction(QStringLiteral("&%1 %2").arg(i + 1).arg(QDir::toNativeSeparators(paths[i])));
        entry->setObjectName(QStringLiteral("OpenRecent_%1").arg(i));
        connect(entry, &QAction::triggered, this, [this, path = paths[i]] { OpenRecent_Click(path); });
    }
    OpenRecent->setEnabled(!paths.isEmpty());
}

void WepnEditor_Main::OpenRecent_Click(const QString &path)
{
    if (!QFileInfo(path).isFile()) {
        QStringList paths = recentScripts();
        paths.removeAll(path);
        m_settings.setValue(kRecentKey, paths);
        showRecent(paths);
        dialogs().message(Messages::recentMissing(path), {});
        return;
    }
    // File > Open's steps with the entry in place of the dialog's answer; a script saved under a
    // name without ".wepn" opens too.
    if (!resolveUnsavedChanges())
        return;
    if (!prepareOpen())
        return openFailed();
    openChosenScript(path);
}

void WepnEditor_Main::openChosenScript(const QString &path)
{
    // After a file was chosen its name is in the caption and the document may hold half of it:
    // it must never be saved, over that file or any other.
    auto abandon = [this] {
        Save->setEnabled(false);
        cmdAdd->setEnabled(false);
        cmdRemove->setEnabled(false);
        intLoaded = 0;
    };
    // Whatever the read gives, nothing of it is an edit of the user's.
    startHistory();

    document.strWEPNFile = PathText::toBytes(path);
    setWindowTitle(documentCaption(FSO, document.strWEPNFile));
    lstWeaponResults->setToolTip(QString());
    fraTurretProperties->setEnabled(false);

    std::string bytes;
    if (std::optional<std::string> unreadable = AtomicFile::read(document.strWEPNFile, bytes)) {
        // The reason already names the file.
        dialogs().message(PathText::toQString(*unreadable), {});
        return abandon();
    }
    rememberOnDisk(bytes);
    // Read as the game reads it, the script's text stays beside the document, to be saved in place.
    m_gameScript.reset();
    auto gameScript = std::make_unique<GameReading::GameScript>();
    const ReadResult read = ReadAsGame->isChecked() ? GameReading::ReadGameScript(document, bytes, *gameScript)
                                                    : OpenEditorScript(document, bytes);
    // The read rebuilds all three entry lists, also when it stops part way.
    refreshList(lstWeaponResults, document.lstWeaponResults);
    refreshList(lstArmorFamilies, document.lstArmorFamilies);
    refreshList(lstAccuracy, document.lstAccuracy);
    // An abandoned read leaves the window as a failed one does; both say why, with the line.
    if (!read.completed()) {
        dialogs().message(Messages::cannotOpen(PathText::toQString(document.strWEPNFile),
                                               Latin1::toQString(read.message())),
                          {});
        return abandon();
    }
    intLoaded = 1;

    if (document.bHasMiscValues)
        fraTurretProperties->setEnabled(true);
    Save->setEnabled(true);

    const std::string fireType = TextPieces::toLower(document.Weapon.sWeaponFireType);
    const auto known = std::find_if(std::begin(kFireTypes), std::end(kFireTypes),
                                    [&](const FireTypeFields &row) { return row.fireType == fireType; });
    FireTypeFields fields{};
    if (known != std::end(kFireTypes))
        fields = *known;
    else
        dialogs().message(Messages::unrecognizedFireType(Latin1::toQString(document.Weapon.sWeaponFireType)), {});
    Value[3]->setEnabled(fields.velocity);
    Value[5]->setEnabled(fields.blastRadius);
    Value[6]->setEnabled(fields.fireDuration);
    Value[7]->setEnabled(fields.anticipation);
    Value[16]->setEnabled(fields.passThruHealth);
    cboFireAxis->setEnabled(fields.fireAxis);

    document.Weapon.InitializeWeaponValues();
    // An activation the drop-down does not offer is shown as the script's own item while that
    // script is open, read as the game reads it.
    for (int i = cboActivation->count() - 1; i >= 0; --i) {
        if (cboActivation->itemData(i).toBool())
            cboActivation->removeItem(i);
    }
    if (ReadAsGame->isChecked())
        fillUnnamedAccuracies(document, bytes);
    if (std::optional<QString> problem = ShowDocument()) {
        dialogs().message(Messages::cannotOpen(PathText::toQString(document.strWEPNFile), *problem), {});
        return abandon();
    }

    if (ReadAsGame->isChecked() && cboActivation->currentIndex() < 0 && !document.Weapon.sActivation.empty()) {
        cboActivation->addItem(Latin1::toQString(document.Weapon.sActivation), true);
        cboActivation->setItemData(cboActivation->count() - 1, Messages::scriptsOwnItem(), Qt::ToolTipRole);
        cboActivation->setCurrentIndex(cboActivation->count() - 1);
    }
    if (ReadAsGame->isChecked()) {
        gameScript->opened = document;
        m_gameScript = std::move(gameScript);
        if (!m_gameScript->keepsText)
            dialogs().message(Messages::gameTextNotKept(PathText::toQString(document.strWEPNFile),
                                                        Latin1::toQString(m_gameScript->notes.front())),
                              {});
    }

    cmdAdd->setEnabled(true);
    cmdRemove->setEnabled(true);
    for (QGroupBox *frame : {fraBasicStats, fraWeaponResults, fraRotations, fraPenetration, fraAccuracy})
        frame->setEnabled(true);

    const bool turret = TextPieces::toLower(document.Weapon.sWeaponType) == "animatedturret";
    for (QLineEdit *rotation : {txtLeftRot, txtRightRot, txtUpRot, txtDownRot})
        rotation->setEnabled(turret);
    rememberRecent(QFileInfo(path).absoluteFilePath());
    // Read as the game reads it, a save keeps the script's text: it changes nothing unasked.
    if (m_gameScript || !warnOfSaveChanges(bytes))
        return;
    // The user chose the reading that keeps the script's text: the setting, then the same Open.
    ReadAsGame->setChecked(true);
    if (prepareOpen())
        openChosenScript(path);
    else
        openFailed();
}

void WepnEditor_Main::rememberOnDisk(const std::string &bytes)
{
    m_onDiskPath = document.strWEPNFile;
    m_onDiskBytes = bytes;
}

bool WepnEditor_Main::changedOnDisk(const std::string &path) const
{
    if (m_onDiskPath.empty())
        return false;
    const QFileInfo target(PathText::toQString(path)), known(PathText::toQString(m_onDiskPath));
    if (!target.exists() || target.canonicalFilePath() != known.canonicalFilePath())
        return false;
    if (target.size() != static_cast<qint64>(m_onDiskBytes.size()))
        return true;
    std::string bytes;
    return AtomicFile::read(path, bytes) || bytes != m_onDiskBytes;
}

// A mod author must never overwrite a script without knowing that the editor's save would change
// what the game reads from it: the script as read against what a save without edits writes.
bool WepnEditor_Main::warnOfSaveChanges(const std::string &bytes)
{
    constexpr std::size_t kListed = 10;
    const std::vector<GameChange> changes = SaveChanges(bytes, WeaponScriptText(document));
    if (changes.empty())
        return false;
    QStringList listed;
    for (std::size_t i = 0; i < changes.size() && i < kListed; ++i)
        listed << (changes[i].line > 0 ? QStringLiteral("Line %1: ").arg(changes[i].line) : QStringLiteral("Whole file: "))
                      + Latin1::toQString(changes[i].message);
    return dialogs().noticeOfferingGameReading(Messages::saveChangesWhatTheGameReads(
        PathText::toQString(document.strWEPNFile), listed, static_cast<int>(changes.size() - listed.size())));
}

void WepnEditor_Main::Save_Click()
{
    // A cancelled Open refills the family lists; when the family list changed meanwhile, record i
    // may no longer belong to entry i, and the writer pairs them.
    if (!document.familyTablesMatchLists()) {
        dialogs().message(Messages::familiesOutOfStep(), {});
        return;
    }
    const std::optional<QString> chosen
        = dialogs().saveFile(PathText::toQString(document.strWEPNFile), scriptFileFilter());
    if (!chosen)
        return;

    // The caption never names a file that was not written: on failure both go back.
    const std::string previousFile = document.strWEPNFile;
    const QString previousCaption = windowTitle();
    auto restore = [&] {
        document.strWEPNFile = previousFile;
        setWindowTitle(previousCaption);
    };

    document.strWEPNFile = PathText::toBytes(*chosen);
    setWindowTitle(documentCaption(FSO, document.strWEPNFile));
    // Another program's edit of the script since it was read is not undone without a word.
    if (changedOnDisk(document.strWEPNFile)
        && !dialogs().replaceChangedFile(Messages::changedOnDisk(PathText::toQString(document.strWEPNFile))))
        return restore();

    if (std::optional<QString> refusal = CollectDocument()) {
        dialogs().message(*refusal, {});
        return restore();
    }
    document.extendFamilyTables();
    std::optional<std::string> problem;
    if (m_gameScript) {
        // Only the changed values are written into the script's own text; when they cannot be, the
        // normalised form is written only if the user agrees.
        const GameReading::SaveText text = GameReading::SaveGameScript(*m_gameScript, document);
        QStringList reasons;
        for (const std::string &reason : text.problems)
            reasons << Latin1::toQString(reason);
        if (!reasons.isEmpty()
            && !dialogs().confirm(Messages::saveNormalised(PathText::toQString(document.strWEPNFile),
                                                           reasons.join(QLatin1Char('\n'))),
                                  {}))
            return restore();
        problem = AtomicFile::write(document.strWEPNFile, text.bytes);
        if (!problem)
            GameReading::rememberSave(*m_gameScript, text.bytes, document);
    } else {
        problem = WriteWeaponScript(document, document.strWEPNFile);
    }
    if (problem) {
        // The writer's reason names the file and what the system said.
        dialogs().message(PathText::toQString(*problem), {});
        return restore();
    }
    // What was written is what a later change on disk is told apart from.
    if (std::string saved; !AtomicFile::read(document.strWEPNFile, saved))
        rememberOnDisk(saved);
    else
        m_onDiskPath.clear();
    markSaved();
    rememberRecent(QFileInfo(PathText::toQString(document.strWEPNFile)).absoluteFilePath());
    dialogs().message(Messages::savedTo(PathText::toQString(document.strWEPNFile)), {});
}

bool WepnEditor_Main::resolveUnsavedChanges()
{
    if (!bModified || intLoaded == 0)
        return true;
    const QString name = PathText::toQString(FSO.GetFileName(document.strWEPNFile));
    switch (dialogs().askSaveChanges(Messages::saveChanges(name))) {
    case Dialogs::SaveChoice::Discard:
        return true;
    case Dialogs::SaveChoice::SaveAs:
        Save_Click();
        return !bModified; // a cancelled or failed save keeps the window as it is
    case Dialogs::SaveChoice::Cancel:
        break;
    }
    return false;
}

bool WepnEditor_Main::LoadWeaponEffects()
{
    // The listing comes in the file system's own order; sorted, the drop-down reads the same on
    // every machine.
    std::vector<std::string> names;
    std::error_code error;
    std::filesystem::directory_iterator entry(std::filesystem::path(strWFDir), error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        std::string name = entry->path().filename().string();
        if (name.find('.') == std::string::npos)
            names.push_back(std::move(name));
    }

    // Clearing an editable drop-down also clears what it shows; a loaded script keeps its effect
    // name there, since a later Save As takes it from the field.
    const QString shown = cboWeaponEffects->currentText();
    cboWeaponEffects->clear();
    if (error) {
        cboWeaponEffects->setEditText(shown);
        return false;
    }
    std::sort(names.begin(), names.end());
    for (const std::string &name : names)
        cboWeaponEffects->addItem(Latin1::toQString(name));
    cboWeaponEffects->setEditText(shown);
    if (cboWeaponEffects->count() > 0)
        cboWeaponEffects->setEnabled(true);
    return true;
}

bool WepnEditor_Main::LoadFamilyList()
{
    if (!FSO.FileExists(strFLFile)) {
        dialogs().message(Messages::familyListMissing(), Messages::familyListMissingTitle());
        return true;
    }
    const FamilyList families = ReadFamilyListFile(strFLFile);
    document.setFamilies(families.armourFamilies, families.attackFamilies);
    refreshList(lstArmorFamilies, document.lstArmorFamilies);
    refreshList(lstAccuracy, document.lstAccuracy);
    if (families.ok())
        return true;
    // The Open ends quietly on this failure unless told why; a mod author with a broken family
    // list needs the file, the line and what is missing.
    dialogs().message(PathText::toQString(families.error), {});
    return false;
}
