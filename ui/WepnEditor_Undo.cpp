// SPDX-License-Identifier: MIT
// Undo and redo: every Add, Remove and Apply, and every change of a field, is one step of the
// window's QUndoStack, which restores the fields, the lists and the unsaved-changes state.
#include "WepnEditor_Main.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSignalBlocker>
#include <QUndoStack>

namespace {

// One step: the state before and after it. The first redo is the change the user already made.
class EditStep : public QUndoCommand
{
public:
    EditStep(WepnEditor_Main &window, const QString &name, WepnEditor_Main::EditState before,
             WepnEditor_Main::EditState after, QWidget *field, int session)
        : QUndoCommand(name)
        , m_window(window)
        , m_before(std::move(before))
        , m_after(std::move(after))
        , m_field(field)
        , m_session(session)
    {}

    void undo() override { m_window.restoreState(m_before, m_after); }
    void redo() override
    {
        if (!m_done)
            m_done = true;
        else
            m_window.restoreState(m_after, m_before);
    }
    int id() const override { return m_field ? 1 : -1; }
    bool mergeWith(const QUndoCommand *other) override
    {
        const auto *next = static_cast<const EditStep *>(other);
        if (next->m_field != m_field || next->m_session != m_session)
            return false;
        m_after = next->m_after;
        // Typed and taken back: no step at all.
        setObsolete(m_after.form == m_before.form);
        return true;
    }

private:
    WepnEditor_Main &m_window;
    WepnEditor_Main::EditState m_before;
    WepnEditor_Main::EditState m_after;
    QWidget *m_field;
    int m_session;
    bool m_done = false;
};

// Tells the window of every key press and click before any widget sees it: the changes of an
// input event are told apart from those the program made before it.
class InputWatcher : public QObject
{
public:
    InputWatcher(QObject *parent, std::function<void()> onInput)
        : QObject(parent)
        , m_onInput(std::move(onInput))
    {}

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        switch (event->type()) {
        case QEvent::KeyPress:
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonDblClick:
        case QEvent::InputMethod:
        case QEvent::Drop:
            m_onInput();
            break;
        default:
            break;
        }
        return false;
    }

private:
    std::function<void()> m_onInput;
};

QVariant valueOf(QWidget *field)
{
    if (auto *edit = qobject_cast<QLineEdit *>(field))
        return edit->text();
    if (auto *combo = qobject_cast<QComboBox *>(field))
        return combo->isEditable() ? QVariant(combo->currentText()) : QVariant(combo->currentIndex());
    return qobject_cast<QCheckBox *>(field)->isChecked();
}

void showFieldValue(QWidget *field, const QVariant &value)
{
    if (auto *edit = qobject_cast<QLineEdit *>(field))
        edit->setText(value.toString());
    else if (auto *combo = qobject_cast<QComboBox *>(field); combo && combo->isEditable())
        combo->setEditText(value.toString());
    else if (combo)
        combo->setCurrentIndex(value.toInt());
    else
        qobject_cast<QCheckBox *>(field)->setChecked(value.toBool());
}

} // namespace

void WepnEditor_Main::buildUndo()
{
    m_undoStack = new QUndoStack(this);
    connect(m_undoStack, &QUndoStack::cleanChanged, this, [this](bool clean) { bModified = !clean; });
    connect(m_undoStack, &QUndoStack::canUndoChanged, Undo, &QAction::setEnabled);
    connect(m_undoStack, &QUndoStack::canRedoChanged, Redo, &QAction::setEnabled);
    connect(m_undoStack, &QUndoStack::undoTextChanged, this, [this](const QString &text) {
        Undo->setText(text.isEmpty() ? QStringLiteral("&Undo") : QStringLiteral("&Undo ") + text);
    });
    connect(m_undoStack, &QUndoStack::redoTextChanged, this, [this](const QString &text) {
        Redo->setText(text.isEmpty() ? QStringLiteral("&Redo") : QStringLiteral("&Redo ") + text);
    });
    connect(Undo, &QAction::triggered, m_undoStack, &QUndoStack::undo);
    connect(Redo, &QAction::triggered, m_undoStack, &QUndoStack::redo);
    connect(qApp, &QApplication::focusChanged, this, [this] { ++m_session; });
    m_inputWatcher = new InputWatcher(this, [this] { m_before.reset(); });
    qApp->installEventFilter(m_inputWatcher);

    // Every field the user can change, with the signal of the user's change and the one of any
    // change. An editable drop-down's text field belongs to the drop-down.
    for (QLineEdit *edit : findChildren<QLineEdit *>()) {
        auto *combo = qobject_cast<QComboBox *>(edit->parentWidget());
        QWidget *field = combo ? static_cast<QWidget *>(combo) : edit;
        connect(edit, &QLineEdit::textEdited, this, [this, field] { userChanged(field); });
        if (!combo)
            connect(edit, &QLineEdit::textChanged, this, [this, field] { fieldChanged(field); });
        m_shown.insert(field, valueOf(field));
    }
    for (QComboBox *combo : findChildren<QComboBox *>()) {
        if (combo->isEditable())
            connect(combo, &QComboBox::editTextChanged, this, [this, combo] { fieldChanged(combo); });
        else
            connect(combo, &QComboBox::currentIndexChanged, this, [this, combo] { fieldChanged(combo); });
        connect(combo, &QComboBox::activated, this, [this, combo] { userChanged(combo); });
        m_shown.insert(combo, valueOf(combo));
    }
    connect(chkAlwaysDMG, &QCheckBox::toggled, this, [this] { fieldChanged(chkAlwaysDMG); });
    connect(chkAlwaysDMG, &QCheckBox::clicked, this, [this] { userChanged(chkAlwaysDMG); });
    m_shown.insert(chkAlwaysDMG, valueOf(chkAlwaysDMG));
}

void WepnEditor_Main::fieldChanged(QWidget *field)
{
    if (field == m_recordedAhead) {
        m_recordedAhead = nullptr;
    } else if (!m_before) {
        m_before = m_shown;
    }
    m_shown.insert(field, valueOf(field));
}

void WepnEditor_Main::userChanged(QWidget *field)
{
    EditState before{m_before.value_or(m_shown), std::nullopt};
    m_before.reset();
    const QVariant now = valueOf(field);
    // A text field tells of the user's edit before it tells of the change.
    if (m_shown.value(field) != now)
        m_recordedAhead = field;
    m_shown.insert(field, now);
    if (before.form == m_shown)
        return;
    QString name = fieldLabel(field->objectName().toStdString());
    if (field == txtPenetration || field == txtAccuracy)
        name.prepend(qobject_cast<QGroupBox *>(field->parentWidget())->title() + QLatin1Char(' '));
    if (field == chkAlwaysDMG)
        name = chkAlwaysDMG->text();
    m_undoStack->push(new EditStep(*this, name, std::move(before), {m_shown, std::nullopt}, field, m_session));
}

void WepnEditor_Main::recordStep(const QString &name, void (WepnEditor_Main::*command)())
{
    EditState before{m_shown, listsState()};
    (this->*command)();
    m_before.reset();
    EditState after{m_shown, listsState()};
    // A command that changed no list (nothing selected, a value refused) is no step.
    if (before.lists == after.lists)
        return;
    ++m_session;
    m_undoStack->push(new EditStep(*this, name, std::move(before), std::move(after), nullptr, m_session));
}

WepnEditor_Main::ListsState WepnEditor_Main::listsState() const
{
    auto selected = [](const QListWidget *list) {
        const std::optional<std::size_t> row = selectedEntry(list);
        return row ? static_cast<int>(*row) : -1;
    };
    return {document.WeaponResults,    document.lstWeaponResults, document.FamilyPenetrations,
            document.lstArmorFamilies, document.FamilyAccuracies,  document.lstAccuracy,
            {selected(lstWeaponResults), selected(lstArmorFamilies), selected(lstAccuracy)}};
}

void WepnEditor_Main::restoreState(const EditState &to, const EditState &from)
{
    ++m_session;
    if (to.lists && from.lists && !(*to.lists == *from.lists)) {
        const ListsState &lists = *to.lists;
        document.WeaponResults = lists.results;
        document.lstWeaponResults = lists.resultEntries;
        document.FamilyPenetrations = lists.penetrations;
        document.lstArmorFamilies = lists.armourEntries;
        document.FamilyAccuracies = lists.accuracies;
        document.lstAccuracy = lists.accuracyEntries;
        const std::pair<QListWidget *, const std::vector<std::string> *> shown[] = {
            {lstWeaponResults, &lists.resultEntries}, {lstArmorFamilies, &lists.armourEntries},
            {lstAccuracy, &lists.accuracyEntries}};
        for (std::size_t i = 0; i < 3; ++i) {
            // The selection comes back as it was; the fields are the step's, not the entry's.
            const QSignalBlocker quiet(shown[i].first);
            refreshList(shown[i].first, *shown[i].second);
            // Made the current item too, so that the arrow keys go on from the entry shown.
            if (QListWidgetItem *item = shown[i].first->item(lists.selected[i]))
                shown[i].first->setCurrentItem(item);
        }
    }
    // Drop-downs first: the effect rule they run must not overwrite the texts restored after them.
    for (const bool drop : {true, false}) {
        for (auto it = to.form.begin(); it != to.form.end(); ++it) {
            if (bool(qobject_cast<QComboBox *>(it.key())) == drop && from.form.value(it.key()) != it.value())
                showFieldValue(it.key(), it.value());
        }
    }
    m_before.reset();
}

void WepnEditor_Main::startHistory()
{
    m_undoStack->clear();
    m_before.reset();
    bModified = false;
}

void WepnEditor_Main::markSaved()
{
    m_undoStack->setClean();
    bModified = false;
}
