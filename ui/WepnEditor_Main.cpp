// SPDX-License-Identifier: MIT
#include "WepnEditor_Main.h"

#include "AppIcon.h"
#include "AppInfo.h"
#include "DataDirectorySetting.h"
#include "GamePaths.h"
#include "GameReading.h"
#include "Latin1.h"
#include "Messages.h"
#include "PathText.h"
#include "ReadingSetting.h"
#include "frmDecompiledDataDir.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QDropEvent>
#include <QMimeData>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QWindow>
#include <QCheckBox>
#include <QComboBox>
#include <QFontInfo>
#include <QGroupBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QStyleOptionGroupBox>
#include <QStylePainter>
#include <QTimer>
#include <QToolTip>
#include <QUndoStack>
#include <QVBoxLayout>
#include <QSettings>

#include <limits>
#include <span>

namespace {

// The form is laid out in twips; 15 twips are one pixel at 96 dpi, and Qt scales pixels on
// denser screens.
constexpr int px(int twips)
{
    return twips / 15;
}

QRect twipRect(int left, int top, int width, int height)
{
    return QRect(px(left), px(top), px(width), px(height));
}

QString text(std::string_view latin1)
{
    return Latin1::toQString(latin1);
}

// --- The form as data ---------------------------------------------------------------------------

enum class Kind { Text, ReadOnly, PickList, EditList };
enum class State { Enabled, Disabled, DisabledWithLabel };

// One labelled field. For text fields `content` is the initial text, for drop-downs the items
// separated by '|'.
struct Row
{
    std::string_view label;
    std::string_view tip;
    std::string_view name;
    Kind kind;
    std::string_view content = {};
    State state = State::Enabled;
};

constexpr Row kBasicStats[] = {
    {"Weapon Type:", "How the weapon tracks targets.", "Value_0", Kind::ReadOnly},
    {"Weapon Fire Type:", "Type of projectile.", "Value_1", Kind::ReadOnly},
    {"Weapon Effects File:", "Effects file for the wepon.", "cboWeaponEffects", Kind::EditList},
    {"Activation:", "When the weapon is used.", "cboActivation", Kind::PickList, "Normal|Special Attack|Normal Only"},
    {"Projectile Velocity:", "How fast the projectile moves, equals 0 for InstantHit weapons (includes Beams.)",
     "Value_3", Kind::Text, "0"},
    {"Firing Range:", "The weapon's firing range, not projectile range.", "Value_4", Kind::Text, "0"},
    {"Blast Radius:", "Only for sphereburst weapons.", "Value_5", Kind::Text, "0", State::Disabled},
    {"Fire Duration:", "How long the beam is active.", "Value_6", Kind::Text, "0", State::Disabled},
    {"Anticipation Time:", "Time between start of firing sequence and appearance of beam.", "Value_7", Kind::Text,
     "0", State::Disabled},
    {"Fire Axis:", "Direction of ejection (for missiles only.)", "cboFireAxis", Kind::PickList, "Forward|Left|Up",
     State::Disabled},
    {"Max Effects Spawned:", "Max hit effects to spawn over lifetime of weapon.", "Value_8", Kind::Text, "0"},
    {"Use Velocity Prediction:", "Leads targets when enabled.", "cboVelocityPredict", Kind::PickList, "No|Yes"},
    {"Check Line of Fire:", "Checks the line of fire for friendlies before firing.", "cboCheckLOF", Kind::PickList,
     "No|Yes"},
    {"Fire Delay:", "Delay between shots, in seconds.", "Value_9", Kind::Text, "0"},
    {"Burst Length:", "Burst length, in seconds.", "Value_10", Kind::Text, "0"},
    {"Burst Shots:", "Number of shots in a burst.", "Value_11", Kind::ReadOnly},
    {"Burst Delay:", "Delay between bursts, in seconds.", "Value_12", Kind::Text, "0"},
    {"Shoot at Secondaries:", "Shoots secondary targets if cannot hit main target.", "cboShootSecondaries",
     Kind::PickList, "No|Yes"},
    {"Shoot at Surroundings:", "Scans for nearby enemies (SLOW!)", "cboShootSurroundings", Kind::PickList, "No|Yes"},
    {"Horizontal Tracking Speed:", "", "Value_13", Kind::Text, "0"},
    {"Vertical Tracking Speed:", "", "Value_14", Kind::Text, "0"},
    {"Speed Multiplier:", "Tracking speed multiplier when weapon is over target.", "Value_15", Kind::Text, "0"},
    {"Track Distant Targets:", "Track targets outside of firing range.", "cboTrackDistantTargets", Kind::PickList,
     "No|Yes"},
    {"Beam Pass-Thru Health:", "Beam will pass through target if health is below this value.", "Value_16",
     Kind::Text, "0", State::Disabled},
};

constexpr Row kWeaponResults[] = {
    {"Condition:", "This effect occurs when...", "cboCondition", Kind::PickList, "Hit|Miss"},
    {"Effect:", "Happens when the projectile hits/misses.", "cboEffect", Kind::PickList,
     "DamageHealth|Disable|Push|SpawnWeaponFire"},
    {"Minimum Effect:", "Minimum value for the effect.", "txtMinEffect", Kind::Text, "0"},
    {"Maximum Effect:", "Maximum value for the effect.", "txtMaxEffect", Kind::Text, "0"},
    {"Spawned FX:", "Graphical effect spawned on hit/miss.", "txtSpawnedWeaponEffect", Kind::Text, "",
     State::DisabledWithLabel},
};

constexpr Row kRotations[] = {
    {"Firing Arc:", "1/2 the weapon's cone of fire.", "txtFiringArc", Kind::Text, "0"},
    {"Left Rotation:", "Turret's \"left\" rotation (-).", "txtLeftRot", Kind::Text, "0"},
    {"Right Rotation:", "Turret's \"right\" rotation (+).", "txtRightRot", Kind::Text, "0"},
    {"Down Rotation:", "Turret's \"down\" rotation (-).", "txtDownRot", Kind::Text, "0"},
    {"Up Rotation:", "Turret's \"up\" rotation (+).", "txtUpRot", Kind::Text, "0"},
};

constexpr Row kTurretProperties[] = {
    {"Barrel Recoil Distance:", "Distance the turret's barrel recoils, in meters.", "txtBarrelRecoil", Kind::Text,
     "0"},
    {"Slave Fire Delay:", "Seconds between initial weapon firing and each slave firing.", "txtSlaveFireDelay",
     Kind::Text, "0"},
};

constexpr Row kPenetration[] = {
    {"Shield Penetration:", "Percentage chance of an impact penetrating a defense field.", "txtFieldPenetration",
     Kind::Text, "0"},
    {"Default Penetration:", "Default fraction of damage applied when a ship is hit.", "txtDefaultPenetration",
     Kind::Text, "0"},
};

// The "Value:" rows of the two family frames: a short label and a narrower field.
struct ValueRow
{
    std::string_view tip;
    std::string_view name;
    int top;
};

struct Button
{
    std::string_view name;
    std::string_view caption;
    std::string_view tip;
    int left;
    int top;
    int width;
    bool enabled;
};

struct List
{
    std::string_view name;
    QRgb textColour;
    int top;
    int height;
};

// A frame's content, top to bottom in tab order. Every part is optional.
struct FrameSpec
{
    std::string_view name;
    std::string_view caption;
    int left;
    int top;
    int height;
    std::string_view heading = {};
    int headingTop = 0;
    std::optional<List> listBeforeRows = {};
    std::span<const Row> rows = {};
    int firstRowTop = 240;
    std::optional<List> listAfterRows = {};
    std::optional<ValueRow> valueRow = {};
    bool checkBox = false;
    std::span<const Button> buttons = {};
};

constexpr int kFrameWidth = 3975;
constexpr int kRowPitch = 360;

constexpr Button kResultButtons[] = {
    {"cmdRemove", "Remove", "Add a new Weapon Impact Result.", 240, 3960, 1095, false},
    {"cmdAdd", "Add", "Add a new Weapon Impact Result.", 1440, 3960, 1095, false},
    {"cmdApply", "Apply", "Apply changes to this Weapon Impact Result.", 2640, 3960, 1215, false},
};
constexpr Button kPenetrationButtons[] = {{"cmdPenApply", "Apply", "", 2640, 3960, 1215, true}};
constexpr Button kAccuracyButtons[] = {{"cmdAccApply", "Apply", "", 2640, 3480, 1215, true}};

const FrameSpec kFrames[] = {
    {.name = "fraBasicStats", .caption = "Basic Stats", .left = 120, .top = 0, .height = 8895, .rows = kBasicStats},
    {.name = "fraWeaponResults",
     .caption = "Weapon Impact Results",
     .left = 4200,
     .top = 0,
     .height = 4575,
     .listBeforeRows = List{"lstWeaponResults", 0xFF0000, 240, 1815},
     .rows = kWeaponResults,
     .firstRowTop = 2160,
     .buttons = kResultButtons},
    {.name = "fraRotations",
     .caption = "Firing Cone and Turret Rotation",
     .left = 4200,
     .top = 4680,
     .height = 2055,
     .rows = kRotations},
    {.name = "fraTurretProperties",
     .caption = "Additional Turret Properties",
     .left = 4200,
     .top = 6840,
     .height = 975,
     .rows = kTurretProperties},
    {.name = "fraPenetration",
     .caption = "Penetration",
     .left = 8280,
     .top = 0,
     .height = 4575,
     .heading = "Armor Family - Penetration Value:",
     .headingTop = 1080,
     .rows = kPenetration,
     .listAfterRows = List{"lstArmorFamilies", 0xFFFF00, 1440, 2400},
     .valueRow = ValueRow{"Fraction of damage applied when a ship of the selected armor type is hit.",
                          "txtPenetration", 3960},
     .buttons = kPenetrationButtons},
    {.name = "fraAccuracy",
     .caption = "Accuracy",
     .left = 8280,
     .top = 4680,
     .height = 4215,
     .heading = "Armor Family - Accuracy Value - Always Damage:",
     .headingTop = 240,
     .listAfterRows = List{"lstAccuracy", 0xFFFF00, 600, 2790},
     .valueRow = ValueRow{"Fraction of shots that will register with against this armor type.", "txtAccuracy", 3480},
     .checkBox = true,
     .buttons = kAccuracyButtons},
};

// --- Look ---------------------------------------------------------------------------------------

const QColor kFieldText(0x80, 0xFF, 0x80);
const QColor kFieldBack(0x40, 0x40, 0x40);
const QColor kDisabledFieldText(0x80, 0x80, 0x80);
const QColor kReadOnlyText(0x80, 0x00, 0x00);
const QColor kReadOnlyBack(0xE0, 0xE0, 0xE0);
const QColor kControlFace(0xC0, 0xC0, 0xC0);
const QColor kCaption(0x00, 0x00, 0xFF);
// The caption blue is unreadable on a dark window; this lighter blue is not.
const QColor kCaptionOnDark(0x8C, 0x8C, 0xFF);

bool isDark(const QColor &colour)
{
    return colour.lightness() < 128;
}

// Buttons and the check box keep their own light grey face; the platform's text colour stays
// unless a dark palette made it light.
QColor textOnControlFace(const QColor &platformText)
{
    return isDark(platformText) ? platformText : QColor(Qt::black);
}

void setColours(QWidget *widget, std::initializer_list<std::pair<QPalette::ColorRole, QColor>> colours)
{
    QPalette palette = widget->palette();
    for (const auto &[role, colour] : colours)
        palette.setColor(role, colour);
    widget->setPalette(palette);
}

// Fields show their own colours whether their frame is enabled or not; a field disabled by
// itself is greyed only in its text.
void styleField(QWidget *field, bool readOnly)
{
    const QColor foreground = readOnly ? kReadOnlyText : kFieldText;
    const QColor background = readOnly ? kReadOnlyBack : kFieldBack;
    QPalette palette = field->palette();
    for (QPalette::ColorRole role : {QPalette::Text, QPalette::ButtonText, QPalette::WindowText})
        palette.setColor(role, foreground);
    for (QPalette::ColorRole role : {QPalette::Base, QPalette::Button, QPalette::Window})
        palette.setColor(role, background);
    palette.setColor(QPalette::Disabled, QPalette::Text, kDisabledFieldText);
    palette.setColor(QPalette::Disabled, QPalette::ButtonText, kDisabledFieldText);
    field->setPalette(palette);
}

void styleLabel(QLabel *label, QColor foreground, QColor background)
{
    label->setAutoFillBackground(true);
    setColours(label, {{QPalette::WindowText, foreground}, {QPalette::Window, background}});
}

// A frame whose caption alone is bold. A bold frame font would pass to every control inside, and
// setting each of them back to plain costs a font change event per control at start-up.
class Frame : public QGroupBox
{
public:
    Frame(const QString &caption, QWidget *parent)
        : QGroupBox(caption, parent)
    {}

protected:
    void paintEvent(QPaintEvent *) override
    {
        QFont bold = font();
        bold.setBold(true);
        QStylePainter painter(this);
        QStyleOptionGroupBox option;
        initStyleOption(&option);
        option.fontMetrics = QFontMetrics(bold);
        painter.setFont(bold);
        painter.drawComplexControl(QStyle::CC_GroupBox, option);
    }
};

QLineEdit *makeLineEdit(QWidget *parent)
{
    auto *edit = new QLineEdit(parent);
    // A script value may be longer than the default limit; it must come back whole.
    edit->setMaxLength(std::numeric_limits<int>::max());
    return edit;
}

} // namespace

// --- Building the window --------------------------------------------------------------------------

WepnEditor_Main::WepnEditor_Main(QSettings &settings, std::unique_ptr<Dialogs> dialogs, QWidget *parent)
    : QMainWindow(parent, Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint
                              | Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint
                              | Qt::MSWindowsFixedSizeDialogHint)
    , m_settings(settings)
    , m_dialogs(std::move(dialogs))
{
    setObjectName(QStringLiteral("WepnEditor_Main"));
    // Never seen: Form_Load sets the caption before the window is shown.
    setWindowTitle(QStringLiteral("Korvath Weapon Editor"));
    setWindowIcon(AppIcon::icon());
    // A .wepn file dropped anywhere on the window is opened.
    setAcceptDrops(true);

    QFont font(QStringLiteral("MS Sans Serif"));
    font.setStyleHint(QFont::SansSerif);
    font.setPointSizeF(8.25);
    // The form's widths were chosen for MS Sans Serif, a narrow face; where the system lacks it,
    // its sans-serif is drawn condensed so that the longest labels still fit.
    if (QFontInfo(font).family() != font.family())
        font.setStretch(QFont::Condensed);
    setFont(font);

    buildMenus();
    buildForm();
    connectHandlers();
    buildUndo();
    layout()->setSizeConstraint(QLayout::SetFixedSize);
}

WepnEditor_Main::~WepnEditor_Main()
{
    // The dialog is a window of its own (so that disabling this one leaves it usable).
    delete m_directoryDialog.data();
    // The history goes while the menu items that show it are still there, and the application
    // tells this window of no input or focus change while it is being taken apart.
    delete m_undoStack;
    delete m_inputWatcher;
    disconnect(qApp, nullptr, this, nullptr);
}

void WepnEditor_Main::buildMenus()
{
    struct Item
    {
        std::string_view name;
        std::string_view caption;
        QKeySequence shortcut;
        bool enabled;
        QAction *WepnEditor_Main::*member;
    };
    auto addItems = [this](QMenu *menu, std::initializer_list<Item> items) {
        for (const Item &item : items) {
            QAction *action = nullptr;
            if (item.caption == "-") {
                action = menu->addSeparator();
            } else {
                action = menu->addAction(text(item.caption));
                action->setShortcut(item.shortcut);
                action->setEnabled(item.enabled);
            }
            action->setObjectName(text(item.name));
            if (item.member)
                this->*item.member = action;
        }
    };

    QMenu *file = menuBar()->addMenu(QStringLiteral("&File"));
    file->setObjectName(QStringLiteral("File"));
    addItems(file, {{"Open", "&Open", QKeySequence(Qt::CTRL | Qt::Key_O), true, &WepnEditor_Main::Open},
                    {"Save", "&Save As...", QKeySequence(Qt::CTRL | Qt::Key_S), false, &WepnEditor_Main::Save},
                    {"sep01", "-", {}, true, nullptr},
                    {"Exit", "E&xit", QKeySequence(Qt::CTRL | Qt::Key_Q), true, &WepnEditor_Main::Exit}});

    OpenRecent = new QMenu(QStringLiteral("Open &Recent"), file);
    OpenRecent->setObjectName(QStringLiteral("OpenRecent"));
    file->insertMenu(Save, OpenRecent);
    showRecent(recentScripts());

    QMenu *edit = menuBar()->addMenu(QStringLiteral("&Edit"));
    edit->setObjectName(QStringLiteral("Edit"));
    addItems(edit, {{"Undo", "&Undo", QKeySequence(Qt::CTRL | Qt::Key_Z), false, &WepnEditor_Main::Undo},
                    {"Redo", "&Redo", QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z), false, &WepnEditor_Main::Redo}});

    QMenu *settings = menuBar()->addMenu(QStringLiteral("&Settings"));
    settings->setObjectName(QStringLiteral("Settings"));
    QMenu *manage = settings->addMenu(QStringLiteral("&Manage Directories"));
    manage->setObjectName(QStringLiteral("ManageDirectories"));
    addItems(manage, {{"DecompiledData", "&Decompiled Data", {}, true, &WepnEditor_Main::DecompiledData}});
    addItems(settings, {{"ReadAsGame", "Read Scripts as the Game Does", {}, true, &WepnEditor_Main::ReadAsGame}});
    ReadAsGame->setCheckable(true);
    ReadAsGame->setChecked(ReadingSetting::load(m_settings));
    connect(ReadAsGame, &QAction::toggled, this, [this](bool on) { ReadingSetting::store(m_settings, on); });
}

void WepnEditor_Main::buildForm()
{
    auto *client = new QWidget(this);
    client->setObjectName(QStringLiteral("client"));
    client->setFixedSize(px(12360), px(8985));
    setCentralWidget(client);

    QFont bold = font();
    bold.setBold(true);

    std::vector<QWidget *> tabOrder;
    auto add = [this](QWidget *widget, std::string_view name) {
        const QString objectName = text(name);
        widget->setObjectName(objectName);
        m_controls.insert(objectName, widget);
    };
    auto addLabel = [&](QGroupBox *frame, std::string_view caption, std::string_view tip, QRect place,
                        std::string_view fieldName) {
        auto *label = new QLabel(text(caption), frame);
        label->setGeometry(place);
        if (!tip.empty())
            label->setToolTip(text(tip));
        if (fieldName == "Value_11") {
            lblBurstShots = label;
            label->setObjectName(QStringLiteral("lblBurstShots"));
        } else {
            label->setObjectName(QStringLiteral("lblML_") + QString::number(lblML.size()));
            lblML.push_back(label);
        }
        m_labels.insert(text(fieldName), text(caption).chopped(caption.ends_with(':') ? 1 : 0));
        return label;
    };
    auto addField = [&](QGroupBox *frame, const Row &row, QRect place) {
        QWidget *field = nullptr;
        if (row.kind == Kind::Text || row.kind == Kind::ReadOnly) {
            QLineEdit *edit = makeLineEdit(frame);
            edit->setText(text(row.content));
            edit->setReadOnly(row.kind == Kind::ReadOnly);
            if (row.name.starts_with("Value_"))
                Value[std::stoul(std::string(row.name.substr(6)))] = edit;
            field = edit;
        } else {
            auto *combo = new QComboBox(frame);
            if (row.kind == Kind::EditList) {
                combo->setEditable(true);
                combo->lineEdit()->setMaxLength(std::numeric_limits<int>::max());
                // Typed names are taken as typed: no completion, no new items.
                combo->setCompleter(nullptr);
                combo->setInsertPolicy(QComboBox::NoInsert);
            } else {
                combo->addItems(text(row.content).split(QLatin1Char('|')));
                combo->setCurrentIndex(-1);
            }
            field = combo;
        }
        field->setGeometry(place);
        styleField(field, row.kind == Kind::ReadOnly);
        field->setEnabled(row.state == State::Enabled);
        add(field, row.name);
        tabOrder.push_back(field);
        return field;
    };
    auto addList = [&](QGroupBox *frame, const List &entry) {
        auto *list = new QListWidget(frame);
        list->setGeometry(twipRect(120, entry.top, 3735, entry.height));
        list->setFont(bold);
        list->setSelectionMode(QAbstractItemView::SingleSelection);
        setColours(list, {{QPalette::Text, QColor::fromRgb(entry.textColour)}, {QPalette::Base, Qt::black}});
        add(list, entry.name);
        tabOrder.push_back(list);
    };

    for (const FrameSpec &entry : kFrames) {
        auto *frame = new Frame(text(entry.caption), client);
        frame->setGeometry(twipRect(entry.left, entry.top, kFrameWidth, entry.height));
        setColours(frame, {{QPalette::WindowText, isDark(palette().color(QPalette::Window)) ? kCaptionOnDark : kCaption}});
        frame->setEnabled(false);
        add(frame, entry.name);

        if (!entry.heading.empty()) {
            auto *heading = new QLabel(text(entry.heading), frame);
            heading->setObjectName(text(entry.name.substr(3)).prepend(QStringLiteral("lbl")) + QStringLiteral("Heading"));
            heading->setGeometry(twipRect(120, entry.headingTop, 3735, 255));
            styleLabel(heading, Qt::white, Qt::black);
        }
        if (entry.listBeforeRows)
            addList(frame, *entry.listBeforeRows);
        int top = entry.firstRowTop;
        for (const Row &row : entry.rows) {
            const bool combo = row.kind == Kind::PickList || row.kind == Kind::EditList;
            QLabel *label = addLabel(frame, row.label, row.tip, twipRect(120, top, 2055, 285), row.name);
            addField(frame, row, twipRect(2280, top, 1575, combo ? 315 : 285));
            if (row.kind == Kind::ReadOnly)
                styleLabel(label, kReadOnlyBack, kFieldBack);
            else
                styleLabel(label, Qt::white, Qt::black);
            label->setEnabled(row.state != State::DisabledWithLabel);
            top += kRowPitch;
        }
        if (entry.listAfterRows)
            addList(frame, *entry.listAfterRows);
        if (entry.valueRow) {
            const ValueRow &row = *entry.valueRow;
            QLabel *label = addLabel(frame, "Value:", row.tip, twipRect(120, row.top, 1095, 285), row.name);
            styleLabel(label, Qt::white, Qt::black);
            addField(frame, Row{"Value:", row.tip, row.name, Kind::Text, "0"}, twipRect(1320, row.top, 1215, 285));
        }
        if (entry.checkBox) {
            auto *check = new QCheckBox(QStringLiteral("Always Causes Damage"), frame);
            check->setGeometry(twipRect(120, 3840, 2175, 255));
            check->setAutoFillBackground(true);
            // A check box fills its face from the button colour, which a dark palette makes dark.
            setColours(check, {{QPalette::Window, kControlFace},
                               {QPalette::Button, kControlFace},
                               {QPalette::WindowText, textOnControlFace(palette().color(QPalette::WindowText))}});
            add(check, "chkAlwaysDMG");
            tabOrder.push_back(check);
        }
        for (const Button &item : entry.buttons) {
            auto *button = new QPushButton(text(item.caption), frame);
            button->setGeometry(twipRect(item.left, item.top, item.width, 495));
            if (!item.tip.empty())
                button->setToolTip(text(item.tip));
            setColours(button, {{QPalette::Button, kControlFace},
                                {QPalette::ButtonText, textOnControlFace(palette().color(QPalette::ButtonText))}});
            button->setEnabled(item.enabled);
            add(button, item.name);
            tabOrder.push_back(button);
        }
    }
    for (std::size_t i = 1; i < tabOrder.size(); ++i)
        setTabOrder(tabOrder[i - 1], tabOrder[i]);

    // Over the form, but no part of it: the form's controls stay what they are.
    fraFirstStart = new QFrame(this);
    fraFirstStart->setObjectName(QStringLiteral("fraFirstStart"));
    fraFirstStart->setFrameShape(QFrame::Box);
    fraFirstStart->setAutoFillBackground(true);
    fraFirstStart->resize(px(3735), px(1800));
    auto *firstStart = new QVBoxLayout(fraFirstStart);
    auto *firstStartText = new QLabel(Messages::firstStart(), fraFirstStart);
    firstStartText->setObjectName(QStringLiteral("lblFirstStart"));
    firstStartText->setWordWrap(true);
    firstStart->addWidget(firstStartText);
    cmdChooseDataFolder = new QPushButton(QStringLiteral("&Choose the Data Folder..."), fraFirstStart);
    cmdChooseDataFolder->setObjectName(QStringLiteral("cmdChooseDataFolder"));
    firstStart->addWidget(cmdChooseDataFolder);
    fraFirstStart->hide();

    lblNumberHint = new QLabel(client);
    lblNumberHint->setObjectName(QStringLiteral("lblNumberHint"));
    lblNumberHint->setWordWrap(true);
    lblNumberHint->setFixedWidth(px(3975));
    lblNumberHint->setFrameShape(QFrame::Box);
    lblNumberHint->setMargin(3);
    lblNumberHint->setAutoFillBackground(true);
    lblNumberHint->setPalette(QToolTip::palette());
    lblNumberHint->hide();
    m_hintTimer = new QTimer(this);
    m_hintTimer->setSingleShot(true);
    m_hintTimer->setInterval(6000);
    connect(m_hintTimer, &QTimer::timeout, lblNumberHint, &QWidget::hide);

    auto find = [this]<typename T>(T *&member, std::string_view name) {
        member = qobject_cast<T *>(control(name));
        Q_ASSERT(member);
    };
    find(fraBasicStats, "fraBasicStats");
    find(fraWeaponResults, "fraWeaponResults");
    find(fraRotations, "fraRotations");
    find(fraTurretProperties, "fraTurretProperties");
    find(fraPenetration, "fraPenetration");
    find(fraAccuracy, "fraAccuracy");
    find(cboWeaponEffects, "cboWeaponEffects");
    find(cboActivation, "cboActivation");
    find(cboFireAxis, "cboFireAxis");
    find(cboVelocityPredict, "cboVelocityPredict");
    find(cboCheckLOF, "cboCheckLOF");
    find(cboShootSecondaries, "cboShootSecondaries");
    find(cboShootSurroundings, "cboShootSurroundings");
    find(cboTrackDistantTargets, "cboTrackDistantTargets");
    find(lstWeaponResults, "lstWeaponResults");
    find(cboCondition, "cboCondition");
    find(cboEffect, "cboEffect");
    find(txtMinEffect, "txtMinEffect");
    find(txtMaxEffect, "txtMaxEffect");
    find(txtSpawnedWeaponEffect, "txtSpawnedWeaponEffect");
    find(cmdRemove, "cmdRemove");
    find(cmdAdd, "cmdAdd");
    find(cmdApply, "cmdApply");
    find(txtFiringArc, "txtFiringArc");
    find(txtLeftRot, "txtLeftRot");
    find(txtRightRot, "txtRightRot");
    find(txtDownRot, "txtDownRot");
    find(txtUpRot, "txtUpRot");
    find(txtBarrelRecoil, "txtBarrelRecoil");
    find(txtSlaveFireDelay, "txtSlaveFireDelay");
    find(txtFieldPenetration, "txtFieldPenetration");
    find(txtDefaultPenetration, "txtDefaultPenetration");
    find(lstArmorFamilies, "lstArmorFamilies");
    find(txtPenetration, "txtPenetration");
    find(cmdPenApply, "cmdPenApply");
    find(lstAccuracy, "lstAccuracy");
    find(txtAccuracy, "txtAccuracy");
    find(chkAlwaysDMG, "chkAlwaysDMG");
    find(cmdAccApply, "cmdAccApply");
}

void WepnEditor_Main::connectHandlers()
{
    connect(Open, &QAction::triggered, this, &WepnEditor_Main::Open_Click);
    connect(Save, &QAction::triggered, this, &WepnEditor_Main::Save_Click);
    connect(Exit, &QAction::triggered, this, &WepnEditor_Main::Exit_Click);
    connect(DecompiledData, &QAction::triggered, this, &WepnEditor_Main::DecompiledData_Click);
    connect(cmdChooseDataFolder, &QPushButton::clicked, this, &WepnEditor_Main::DecompiledData_Click);

    connect(cboEffect, &QComboBox::currentIndexChanged, this, &WepnEditor_Main::cboEffect_Click);
    // Each list command is one step of undo.
    auto step = [this](QPushButton *button, const QString &name, void (WepnEditor_Main::*command)()) {
        connect(button, &QPushButton::clicked, this, [this, name, command] { recordStep(name, command); });
    };
    step(cmdAdd, QStringLiteral("Add"), &WepnEditor_Main::cmdAdd_Click);
    step(cmdApply, QStringLiteral("Apply"), &WepnEditor_Main::cmdApply_Click);
    step(cmdRemove, QStringLiteral("Remove"), &WepnEditor_Main::cmdRemove_Click);
    step(cmdPenApply, QStringLiteral("Penetration Apply"), &WepnEditor_Main::cmdPenApply_Click);
    step(cmdAccApply, QStringLiteral("Accuracy Apply"), &WepnEditor_Main::cmdAccApply_Click);

    // "Selected" is the list's selection, not its current row: giving a list the focus makes a
    // row current without selecting anything.
    auto onSelection = [this](QListWidget *list, void (WepnEditor_Main::*handler)()) {
        connect(list, &QListWidget::itemSelectionChanged, this, [this, list, handler] {
            if (selectedEntry(list))
                (this->*handler)();
        });
    };
    onSelection(lstWeaponResults, &WepnEditor_Main::lstWeaponResults_Click);
    onSelection(lstArmorFamilies, &WepnEditor_Main::lstArmorFamilies_Click);
    onSelection(lstAccuracy, &WepnEditor_Main::lstAccuracy_Click);

    for (int index = 0; index < static_cast<int>(Value.size()); ++index) {
        if (QLineEdit *field = Value[static_cast<std::size_t>(index)])
            connect(field, &QLineEdit::textChanged, this, [this, index] { Value_Change(index); });
    }

    for (QLineEdit *field : {txtMinEffect, txtMaxEffect, txtPenetration})
        field->installEventFilter(this);

    // Text fields take dropped text themselves; a dropped file goes to the window. Their own undo
    // keys go to the window's, which knows every step.
    for (QLineEdit *field : findChildren<QLineEdit *>())
        field->installEventFilter(this);
}

// The character code a key press types, as the key filters expect it; nothing for keys that
// type no character (arrows, Delete, Home, ...), which the filters never see.
static std::optional<int> keyAscii(const QKeyEvent &event)
{
    switch (event.key()) {
    case Qt::Key_Backspace:
        return 8;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return 13;
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
        return std::nullopt;
    default:
        break;
    }
    const Qt::KeyboardModifiers modifiers = event.modifiers() & ~(Qt::KeypadModifier | Qt::ShiftModifier);
    if (modifiers == Qt::ControlModifier && event.key() >= Qt::Key_A && event.key() <= Qt::Key_Z)
        return event.key() - Qt::Key_A + 1;
    if (modifiers != Qt::NoModifier || event.text().size() != 1)
        return std::nullopt;
    return event.text().front().unicode();
}

bool WepnEditor_Main::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::DragEnter || event->type() == QEvent::DragMove || event->type() == QEvent::Drop) {
        auto *drop = static_cast<QDropEvent *>(event);
        if (!drop->mimeData()->hasUrls())
            return false;
        if (event->type() == QEvent::Drop)
            dropEvent(drop);
        else
            drop->acceptProposedAction();
        return true;
    }
    if (event->type() == QEvent::ShortcutOverride || event->type() == QEvent::KeyPress) {
        const auto *key = static_cast<QKeyEvent *>(event);
        // Left unaccepted, the key runs Edit > Undo or Redo instead of the field's own; with nothing
        // to undo or redo it does nothing rather than the field's own undo.
        if (key->matches(QKeySequence::Undo) || key->matches(QKeySequence::Redo)
            || key->keyCombination() == QKeyCombination(Qt::CTRL | Qt::SHIFT | Qt::Key_Z))
            return true;
    }
    const bool filtered = watched == txtMinEffect || watched == txtMaxEffect || watched == txtPenetration;
    if (event->type() != QEvent::KeyPress || !filtered)
        return QMainWindow::eventFilter(watched, event);
    const std::optional<int> typed = keyAscii(*static_cast<QKeyEvent *>(event));
    if (!typed)
        return false;
    int KeyAscii = *typed;
    if (watched == txtMinEffect)
        txtMinEffect_KeyPress(KeyAscii);
    else if (watched == txtMaxEffect)
        txtMaxEffect_KeyPress(KeyAscii);
    else if (watched == txtPenetration)
        txtPenetration_KeyPress(KeyAscii);
    // A printable character the filter dropped; dropped control keys (Enter, Ctrl+V) say nothing.
    if (KeyAscii == 0 && *typed >= 32)
        showNumberHint(static_cast<QLineEdit *>(watched));
    return KeyAscii == 0;
}

QWidget *WepnEditor_Main::control(std::string_view controlName) const
{
    return m_controls.value(text(controlName));
}

QString WepnEditor_Main::fieldLabel(std::string_view controlName) const
{
    return m_labels.value(text(controlName));
}

void WepnEditor_Main::refreshList(QListWidget *list, const std::vector<std::string> &entries)
{
    list->clear();
    for (const std::string &entry : entries)
        list->addItem(Latin1::toQString(entry));
}

void WepnEditor_Main::setListEntry(QListWidget *list, const std::vector<std::string> &entries, std::size_t i)
{
    if (QListWidgetItem *item = list->item(static_cast<int>(i)); item && i < entries.size())
        item->setText(Latin1::toQString(entries[i]));
}

std::optional<std::size_t> WepnEditor_Main::selectedEntry(const QListWidget *list)
{
    const QList<QListWidgetItem *> selected = list->selectedItems();
    if (selected.isEmpty())
        return std::nullopt;
    return static_cast<std::size_t>(list->row(selected.constFirst()));
}

// --- Start-up, data directory, exit ---------------------------------------------------------------

void WepnEditor_Main::Form_Load()
{
    setWindowTitle(Latin1::toQString(AppInfo::startupCaption()));
    LoadDataDirectory();
    // Without the game's data folder nothing else can work: the window says so where the form is.
    if (!FSO.FolderExists(strDataDir)) {
        fraFirstStart->show();
        fraFirstStart->raise();
        placeFirstStart();
    }
    cboCondition->setCurrentIndex(0);
    cboEffect->setCurrentIndex(0);
}

void WepnEditor_Main::LoadDataDirectory()
{
    setDataDirectory(PathText::toBytes(DataDirectorySetting::load(m_settings)));
}

void WepnEditor_Main::StoreDataDirectory(const std::string &dataDir)
{
    DataDirectorySetting::store(m_settings, PathText::toQString(dataDir));
    fraFirstStart->hide();
    // The derived paths follow at once, so an Open right after the dialog uses the new folder.
    setDataDirectory(dataDir);
}

void WepnEditor_Main::setDataDirectory(const std::string &dataDir)
{
    const GamePaths::Paths paths = GamePaths::derive(dataDir);
    strDataDir = paths.strDataDir;
    strWFDir = paths.strWFDir;
    strWEPNDir = paths.strWEPNDir;
    strFLFile = paths.strFLFile;
}

frmDecompiledDataDir *WepnEditor_Main::directoryDialog() const
{
    return m_directoryDialog;
}

void WepnEditor_Main::DecompiledData_Click()
{
    setEnabled(false);
    m_directoryDialog = new frmDecompiledDataDir(*this);
    m_directoryDialog->Form_Load();
    m_directoryDialog->show();
}

void WepnEditor_Main::Exit_Click()
{
    close();
}

void WepnEditor_Main::closeEvent(QCloseEvent *event)
{
    if (resolveUnsavedChanges())
        event->accept();
    else
        event->ignore();
}

void WepnEditor_Main::dragEnterEvent(QDragEnterEvent *event)
{
    if (event->mimeData()->hasUrls())
        event->acceptProposedAction();
}

void WepnEditor_Main::dropEvent(QDropEvent *event)
{
    const QList<QUrl> urls = event->mimeData()->urls();
    if (urls.isEmpty())
        return;
    event->acceptProposedAction();
    // One document at a time: the first dropped file is the one opened.
    const QUrl &url = urls.constFirst();
    OpenPath(url.isLocalFile() ? url.toLocalFile() : url.toString());
}

// --- Fitting the screen ---------------------------------------------------------------------------

void WepnEditor_Main::placeFirstStart()
{
    // Over the results frame, which is of no use before a script is open.
    fraFirstStart->move(centralWidget()->mapTo(this, QPoint(px(4320), px(1500))));
}

void WepnEditor_Main::showEvent(QShowEvent *event)
{
    fitToScreen();
    placeFirstStart();
    QMainWindow::showEvent(event);
}

QWidget *WepnEditor_Main::fitToScreen()
{
    auto *scroll = qobject_cast<QScrollArea *>(centralWidget());
    const QWidget *form = scroll ? scroll->widget() : centralWidget();
    const QSize needed = form->size() + QSize(0, menuBar()->sizeHint().height());
    const QMargins frame = windowHandle() ? windowHandle()->frameMargins() : QMargins();
    const QSize room = screen()->availableGeometry().size().shrunkBy(frame);
    if (needed.width() <= room.width() && needed.height() <= room.height())
        return scroll;

    // The form keeps its size and scrolls inside a window that the screen can hold.
    if (!scroll) {
        layout()->setSizeConstraint(QLayout::SetDefaultConstraint);
        scroll = new QScrollArea(this);
        scroll->setObjectName(QStringLiteral("formScrollArea"));
        scroll->setFrameShape(QFrame::NoFrame);
        scroll->setWidget(takeCentralWidget());
        setCentralWidget(scroll);
    }
    const int bar = style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, scroll);
    QSize size = needed.boundedTo(room);
    if (needed.height() > room.height())
        size.setWidth(std::min(needed.width() + bar, room.width()));
    if (needed.width() > room.width())
        size.setHeight(std::min(needed.height() + bar, room.height()));
    setFixedSize(size);
    return scroll;
}
