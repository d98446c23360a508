// SPDX-License-Identifier: MIT
#pragma once

#include "CustomFSO.h"
#include "Dialogs.h"
#include "EditorDocument.h"

#include <QHash>
#include <QMainWindow>
#include <QPointer>
#include <QVariant>

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class QAction;
class QCheckBox;
class QComboBox;
class QFrame;
class QGroupBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QMenu;
class QPushButton;
class QSettings;
class QTimer;
class QUndoStack;
class frmDecompiledDataDir;
namespace GameReading {
struct GameScript;
}

// The editor's only working window: every value of one weapon script in six frames, the File and
// Settings menus, and the commands behind them. Controls and fields are public and keep the names
// the rest of the editor uses for them.
class WepnEditor_Main : public QMainWindow
{
    Q_OBJECT
public:
    WepnEditor_Main(QSettings &settings, std::unique_ptr<Dialogs> dialogs, QWidget *parent = nullptr);
    ~WepnEditor_Main() override;

    // The data directory and the paths derived from it, as the file system's bytes (PathText).
    std::string strDataDir;
    std::string strWFDir;
    std::string strWEPNDir;
    std::string strFLFile;
    CustomFSO FSO;
    // 1 once a script has been read in, 0 before and after an abandoned read.
    std::int16_t intLoaded = 0;
    // Set by the user's edits; cleared when a script is read in or saved, and by undoing back to
    // the state that was read in or saved.
    bool bModified = false;
    // The document; document.Weapon is the window's one KorvathWeapon. Its three entry lists are
    // what lstWeaponResults, lstArmorFamilies and lstAccuracy show, entry for entry.
    EditorDocument document;

    Dialogs &dialogs() { return *m_dialogs; }

    // --- Controls, created by the constructor -----------------------------------------------
    QGroupBox *fraBasicStats = nullptr;
    QGroupBox *fraWeaponResults = nullptr;
    QGroupBox *fraRotations = nullptr;
    QGroupBox *fraTurretProperties = nullptr;
    QGroupBox *fraPenetration = nullptr;
    QGroupBox *fraAccuracy = nullptr;

    // Basic Stats: the text fields by index 0, 1 and 3 to 16; Value[2] is null.
    std::array<QLineEdit *, 17> Value{};
    QComboBox *cboWeaponEffects = nullptr;
    QComboBox *cboActivation = nullptr;
    QComboBox *cboFireAxis = nullptr;
    QComboBox *cboVelocityPredict = nullptr;
    QComboBox *cboCheckLOF = nullptr;
    QComboBox *cboShootSecondaries = nullptr;
    QComboBox *cboShootSurroundings = nullptr;
    QComboBox *cboTrackDistantTargets = nullptr;
    // The field labels in the order they are built (objectNames lblML_0, lblML_1, ...).
    std::vector<QLabel *> lblML;
    QLabel *lblBurstShots = nullptr;
    // At a start without a data folder: what to do first, and a button that does it.
    QFrame *fraFirstStart = nullptr;
    QPushButton *cmdChooseDataFolder = nullptr;
    // Shown next to a number field for a moment when its key filter drops a typed character.
    QLabel *lblNumberHint = nullptr;

    QListWidget *lstWeaponResults = nullptr;
    QComboBox *cboCondition = nullptr;
    QComboBox *cboEffect = nullptr;
    QLineEdit *txtMinEffect = nullptr;
    QLineEdit *txtMaxEffect = nullptr;
    QLineEdit *txtSpawnedWeaponEffect = nullptr;
    QPushButton *cmdRemove = nullptr;
    QPushButton *cmdAdd = nullptr;
    QPushButton *cmdApply = nullptr;

    QLineEdit *txtFiringArc = nullptr;
    QLineEdit *txtLeftRot = nullptr;
    QLineEdit *txtRightRot = nullptr;
    QLineEdit *txtDownRot = nullptr;
    QLineEdit *txtUpRot = nullptr;
    QLineEdit *txtBarrelRecoil = nullptr;
    QLineEdit *txtSlaveFireDelay = nullptr;

    QLineEdit *txtFieldPenetration = nullptr;
    QLineEdit *txtDefaultPenetration = nullptr;
    QListWidget *lstArmorFamilies = nullptr;
    QLineEdit *txtPenetration = nullptr;
    QPushButton *cmdPenApply = nullptr;

    QListWidget *lstAccuracy = nullptr;
    QLineEdit *txtAccuracy = nullptr;
    QCheckBox *chkAlwaysDMG = nullptr;
    QPushButton *cmdAccApply = nullptr;

    // Menu commands (File: Open, Save, Exit; Settings > Manage Directories: DecompiledData).
    QAction *Open = nullptr;
    // File > Open Recent: the last scripts read in or saved, newest first, kept in the settings.
    QMenu *OpenRecent = nullptr;
    QAction *Save = nullptr;
    QAction *Exit = nullptr;
    // Edit: Undo and Redo, one step per Add, Remove and Apply, and per change of a field.
    QAction *Undo = nullptr;
    QAction *Redo = nullptr;
    QAction *DecompiledData = nullptr;
    // Settings > Read Scripts as the Game Does: checkable, kept in the user's settings.
    QAction *ReadAsGame = nullptr;

    // --- Start-up, data directory, exit (WepnEditor_Main.cpp) ---------------------------------
    void Form_Load();
    void DecompiledData_Click();
    void Exit_Click();
    // strDataDir from the setting, then the three derived paths.
    void LoadDataDirectory();
    // strDataDir and the setting become dataDir; the derived paths follow at once.
    void StoreDataDirectory(const std::string &dataDir);
    // The directory dialog while it is open.
    frmDecompiledDataDir *directoryDialog() const;

    // --- Open and Save As (WepnEditor_Commands.cpp) -------------------------------------------
    void Open_Click();
    void Save_Click();
    // Both give false when the Open must take its failure path.
    bool LoadWeaponEffects();
    bool LoadFamilyList();
    // After a complete Open: tells the user what a save without edits would change in what the
    // game reads from the script, if anything. True when the user chose to read it as the game does.
    bool warnOfSaveChanges(const std::string &bytes);
    // Whether the open script was read as the game reads it (then it is saved in its own text).
    bool readsAsTheGame() const { return m_gameScript != nullptr; }
    // Whether the file at path is the script as it was read or last saved, changed since by another
    // program (the bytes differ; a file that is gone has nothing to lose).
    bool changedOnDisk(const std::string &path) const;
    // The command line's and a drop's Open: the same checks, family lists and read as File > Open
    // with the path in place of the dialog's answer. False when nothing was read in.
    bool OpenPath(const QString &path);
    // An entry of File > Open Recent: the same steps as File > Open; a script that is gone leaves
    // the list with a message.
    void OpenRecent_Click(const QString &path);
    QStringList recentScripts() const;
    // The unsaved-changes question before the document is replaced or the window closes; false
    // when the user keeps the document (Cancel, or a Save As that did not complete).
    bool resolveUnsavedChanges();
    // The scroll area that takes the form when it does not fit the screen; null while it fits.
    QWidget *fitToScreen();

    // --- Showing and collecting (WepnEditor_Document.cpp) -------------------------------------
    // Puts the record and the document into the controls, fills the families still marked "N"
    // and rebuilds both family tables and their lists. lstWeaponResults and the enabled states
    // are the Open command's. Gives the reason when a family entry cannot be read (the controls
    // are set all the same).
    std::optional<QString> ShowDocument();
    // Takes the controls back into the record and the document, all or nothing: on failure it
    // gives a message naming the field's label and its text, and changes nothing.
    std::optional<QString> CollectDocument();

    // --- Editors and input rules (WepnEditor_Editors.cpp) -------------------------------------
    // The effect rule. Runs on every change of cboEffect's choice; a caller that chooses the
    // item already chosen calls it itself.
    void cboEffect_Click();
    // The list handlers run when an entry becomes selected (selectedEntry gives it).
    void lstWeaponResults_Click();
    void cmdAdd_Click();
    void cmdApply_Click();
    void cmdRemove_Click();
    void lstArmorFamilies_Click();
    void lstAccuracy_Click();
    void cmdPenApply_Click();
    void cmdAccApply_Click();
    // Runs whenever the text of Value[index] changes, by typing or by the program.
    void Value_Change(int index);
    // KeyAscii is the typed character's code (8 for backspace, 13 for Enter, 1 to 26 for Ctrl
    // with a letter); setting it to 0 discards the key.
    void txtMinEffect_KeyPress(int &KeyAscii);
    void txtMaxEffect_KeyPress(int &KeyAscii);
    void txtPenetration_KeyPress(int &KeyAscii);

    // --- Lists mirror the document's entry lists ----------------------------------------------
    // The list shows exactly the entries (any selection is dropped).
    static void refreshList(QListWidget *list, const std::vector<std::string> &entries);
    // Item i shows entries[i] again; the selection stays.
    static void setListEntry(QListWidget *list, const std::vector<std::string> &entries, std::size_t i);
    // The selected entry, or nothing.
    static std::optional<std::size_t> selectedEntry(const QListWidget *list);

    // --- Undo and redo (WepnEditor_Undo.cpp) ------------------------------------------------------
    // What one step changes and its undo restores: the fields' values by control, and for the
    // commands of the three lists their tables, entries and selections.
    using FormState = QHash<QWidget *, QVariant>;
    struct ListsState
    {
        std::vector<WeaponResult> results;
        std::vector<std::string> resultEntries;
        std::vector<FamilyPenetration> penetrations;
        std::vector<std::string> armourEntries;
        std::vector<FamilyAccuracy> accuracies;
        std::vector<std::string> accuracyEntries;
        std::array<int, 3> selected{};
        bool operator==(const ListsState &) const = default;
    };
    struct EditState
    {
        FormState form;
        std::optional<ListsState> lists;
    };
    QUndoStack *undoStack() const { return m_undoStack; }
    // Shows `to` wherever it differs from `from`; what else the user changed since stays.
    void restoreState(const EditState &to, const EditState &from);

    // The label text of a field (without its colon), for messages; empty when it has none.
    QString fieldLabel(std::string_view controlName) const;
    QWidget *control(std::string_view controlName) const;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    bool prepareOpen();
    void openFailed();
    void openChosenScript(const QString &path);
    // The script's path and bytes as read or last saved, to tell a later change by another program.
    void rememberOnDisk(const std::string &bytes);
    void showNumberHint(QLineEdit *field);
    void buildUndo();
    void placeFirstStart();
    void rememberRecent(const QString &path);
    void showRecent(const QStringList &paths);
    // A list command as one step, with what it changed in the lists and the fields.
    void recordStep(const QString &name, void (WepnEditor_Main::*command)());
    // A field's value changed, by the user or the program; the user changed it.
    void fieldChanged(QWidget *field);
    void userChanged(QWidget *field);
    ListsState listsState() const;
    // The undo history belongs to the document read in: a new one starts with each read.
    void startHistory();
    void markSaved();
    void setDataDirectory(const std::string &dataDir);
    void buildForm();
    void buildMenus();
    void connectHandlers();

    QSettings &m_settings;
    std::unique_ptr<Dialogs> m_dialogs;
    QPointer<frmDecompiledDataDir> m_directoryDialog;
    QHash<QString, QWidget *> m_controls;
    QHash<QString, QString> m_labels;
    // Beside the document when the script was opened as the game reads it: its text, to save in place.
    std::unique_ptr<GameReading::GameScript> m_gameScript;
    std::string m_onDiskPath;
    std::string m_onDiskBytes;
    // Where decimals can be typed is told once per window.
    bool m_toldWhereDecimals = false;
    QTimer *m_hintTimer = nullptr;
    QUndoStack *m_undoStack = nullptr;
    QObject *m_inputWatcher = nullptr;
    // The value each field showed last, and the fields as they were before the changes of the input
    // event under way, until its step is recorded.
    FormState m_shown;
    std::optional<FormState> m_before;
    // A field whose change was recorded from its edit signal, before its change signal came.
    QWidget *m_recordedAhead = nullptr;
    // Changes of one field merge into one step while the focus stays where it is.
    int m_session = 0;
};
