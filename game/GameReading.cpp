// SPDX-License-Identifier: MIT
#include "GameReading.h"

#include "NumberText.h"
#include "TextPieces.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace GameReading {

using ScriptSyntax::Expression;
using GameView::Value;

const std::vector<Slot> &slotTable()
{
    using W = KorvathWeapon;
    using D = EditorDocument;
    static const std::vector<Slot> kSlots = {
        {"StartWeaponConfig", 1, &W::sWeaponType},
        {"StartWeaponConfig", 2, &W::sWeaponFireType},
        {"StartWeaponConfig", 3, &W::sWeaponFireName},
        {"StartWeaponConfig", 4, &W::sActivation},
        {"StartWeaponConfig", 5, &W::fWeaponFireSpeed},
        {"StartWeaponConfig", 6, &W::fWeaponFireRange},
        {"StartWeaponConfig", 7, &W::fWeaponFireRadius},
        {"StartWeaponConfig", 8, &W::fWeaponFireLifetime},
        {"StartWeaponConfig", 9, &W::fWeaponFireMisc1},
        {"StartWeaponConfig", 10, &W::iWeaponFireAxis},
        {"StartWeaponConfig", 11, &W::iMaxEffectsSpawned},
        {"StartWeaponConfig", 12, &W::iUseVelocityPred},
        {"StartWeaponConfig", 13, &W::iCheckLineOfFire},
        {"StartWeaponConfig", 14, &W::fFireTime},
        {"StartWeaponConfig", 15, &W::fBurstFireTime},
        {"StartWeaponConfig", 16, &W::fBurstWaitTime},
        {"StartWeaponConfig", 17, &W::iShootAtSecondaries},
        {"StartWeaponConfig", 18, &W::iShootAtSurroundings},
        {"StartWeaponConfig", 19, &W::fMaxAzimuthSpeed},
        {"StartWeaponConfig", 20, &W::fMaxDeclinationSpeed},
        {"StartWeaponConfig", 21, &W::fSpeedMultiplierWhenPointingAtTarget},
        {"StartWeaponConfig", 22, &W::sWeaponShieldPenetration},
        {"StartWeaponConfig", 23, &W::iTrackTargetsOutsideRange},
        {"StartWeaponConfig", 24, &W::fWaitUntilCodeRedState},
        {"StartWeaponConfig", 25, &W::iInstantHitThreshold},
        {"setAngles", 1, &D::fFiringArc},
        {"setAngles", 2, &D::fLeftRotation},
        {"setAngles", 3, &D::fRightRotation},
        {"setAngles", 4, &D::fDownRotation},
        {"setAngles", 5, &D::fUpRotation},
        {"setMiscValues", 1, &D::fBarrelRecoil},
        {"setMiscValues", 2, &D::fSlaveFireDelay},
        {"setPenetration", 1, &D::iFieldPenetration},
        {"setPenetration", 2, &D::fDefaultPenetration},
        {"setAccuracy", 1, &D::iDefaultAccuracy},
    };
    return kSlots;
}

namespace {

// --- The tree's values, with Lua's integer and float arithmetic --------------------------------

using ScriptSyntax::Numeral;

Numeral integer(std::uint64_t value)
{
    return {true, static_cast<long long>(value), 0};
}

Numeral real(double value)
{
    return {false, 0, value};
}

double asReal(const Numeral &n)
{
    return n.integer ? static_cast<double>(n.i) : n.f;
}

std::optional<Numeral> arithmetic(const std::string &op, const Numeral &a, const Numeral &b)
{
    const auto ua = static_cast<std::uint64_t>(a.i), ub = static_cast<std::uint64_t>(b.i);
    const bool ints = a.integer && b.integer;
    const double x = asReal(a), y = asReal(b);
    if (op == "+")
        return ints ? integer(ua + ub) : real(x + y);
    if (op == "-")
        return ints ? integer(ua - ub) : real(x - y);
    if (op == "*")
        return ints ? integer(ua * ub) : real(x * y);
    if (op == "/")
        return real(x / y);
    if (op == "^")
        return real(std::pow(x, y));
    if (op == "//") {
        if (!ints)
            return real(std::floor(x / y));
        if (b.i == 0)
            return std::nullopt;
        if (b.i == -1)
            return integer(0 - ua);
        long long q = a.i / b.i;
        if ((a.i % b.i != 0) && ((a.i ^ b.i) < 0))
            --q;
        return integer(static_cast<std::uint64_t>(q));
    }
    if (op == "%") {
        if (!ints) {
            double m = std::fmod(x, y);
            if ((m > 0) ? y < 0 : (m < 0 && y > 0))
                m += y;
            return real(m);
        }
        if (b.i == 0)
            return std::nullopt;
        if (b.i == -1)
            return integer(0);
        long long m = a.i % b.i;
        if (m != 0 && (m ^ b.i) < 0)
            m += b.i;
        return integer(static_cast<std::uint64_t>(m));
    }
    return std::nullopt;
}

std::optional<Numeral> numeral(const Expression &expression)
{
    switch (expression.kind) {
    case Expression::Kind::Number:
        return ScriptSyntax::numeralValue(expression.token.text);
    case Expression::Kind::Group:
        return numeral(expression.operands[0]);
    case Expression::Kind::Unary: {
        const std::optional<Numeral> operand = numeral(expression.operands[0]);
        if (!operand)
            return std::nullopt;
        return operand->integer ? integer(0 - static_cast<std::uint64_t>(operand->i)) : real(-operand->f);
    }
    case Expression::Kind::Binary: {
        const std::optional<Numeral> left = numeral(expression.operands[0]);
        const std::optional<Numeral> right = left ? numeral(expression.operands[1]) : std::nullopt;
        if (!right)
            return std::nullopt;
        return arithmetic(expression.token.text, *left, *right);
    }
    default:
        return std::nullopt;
    }
}

// --- Filling the document ----------------------------------------------------------------------

const GameView::Call *lastCall(const std::vector<GameView::Call> &calls, std::string_view name)
{
    for (auto call = calls.rbegin(); call != calls.rend(); ++call)
        if (call->name == name)
            return &*call;
    return nullptr;
}

const Value *argumentOf(const GameView::Call &call, std::size_t index)
{
    return index < call.arguments.size() && call.arguments[index].kind != Value::Kind::Nil ? &call.arguments[index]
                                                                                          : nullptr;
}

struct Refusal
{
    int line;
    std::string reason;
};

std::string argumentName(std::string_view statement, std::size_t index)
{
    return "argument " + NumberText::intText(static_cast<long long>(index)) + " of " + std::string(statement);
}

// A refused value as its message shows it, cut like any other text there.
std::string shownValue(const Value &value)
{
    return TextPieces::shortened(GameView::valueText(value));
}

// A whole number is rounded with halves to the even neighbour, as the editor's own reading does;
// the script keeps the exact text unless the value is changed.
template<typename Target>
std::optional<Refusal> take(const Value &value, Target &target, int line, const std::string &what)
{
    if constexpr (std::is_same_v<Target, std::string>) {
        if (value.kind != Value::Kind::Text)
            return Refusal{line, what + " is " + shownValue(value) + ", not a text"};
        target = value.text;
    } else {
        if (value.kind != Value::Kind::Number || !std::isfinite(value.number))
            return Refusal{line, what + " is " + shownValue(value) + ", not a number"};
        if constexpr (std::is_same_v<Target, double>) {
            target = value.number;
        } else {
            const double rounded = std::nearbyint(value.number);
            if (rounded < std::numeric_limits<Target>::min() || rounded > std::numeric_limits<Target>::max())
                return Refusal{line, what + " is " + shownValue(value) + ", beyond "
                                         + NumberText::intText(std::numeric_limits<Target>::min()) + " to "
                                         + NumberText::intText(std::numeric_limits<Target>::max())};
            target = static_cast<Target>(rounded);
        }
    }
    return std::nullopt;
}

std::optional<Refusal> readResult(const GameView::Call &call, WeaponResult &result)
{
    const auto text = [&](std::size_t i, std::string &target) -> std::optional<Refusal> {
        const Value *value = argumentOf(call, i);
        return value ? take(*value, target, call.line, argumentName(call.name, i)) : std::nullopt;
    };
    const auto number = [&](std::size_t i, double &target) -> std::optional<Refusal> {
        const Value *value = argumentOf(call, i);
        return value ? take(*value, target, call.line, argumentName(call.name, i)) : std::nullopt;
    };
    std::optional<Refusal> refusal = text(1, result.sCondition);
    if (!refusal)
        refusal = text(2, result.sEffect);
    if (!refusal)
        refusal = text(3, result.sTarget);
    if (!refusal)
        refusal = number(4, result.fMinEffect);
    if (!refusal)
        refusal = number(5, result.fMaxEffect);
    if (!refusal && result.sEffect == "SpawnWeaponFire")
        refusal = text(6, result.sSpawnedWeaponEffect);
    return refusal;
}

// The families of a statement's tables, from the given argument on: every text key but the
// excluded one, with its number.
template<typename Record, typename Fill>
std::optional<Refusal> readFamilies(const GameView::Call &call, std::size_t first, std::string_view excluded,
                                    std::vector<Record> &records, Fill fill)
{
    for (std::size_t i = first; i < call.arguments.size(); ++i) {
        const Value &table = call.arguments[i];
        if (table.kind != Value::Kind::Table)
            continue;
        for (const auto &[key, value] : table.entries) {
            if (key.kind != Value::Kind::Text || key.text == excluded)
                continue;
            Record record;
            record.sFamily = key.text;
            if (auto refusal = fill(table, value, record, "family " + key.text + " of " + call.name))
                return refusal;
            records.push_back(std::move(record));
        }
    }
    return std::nullopt;
}

template<typename Record, typename EntryText>
void updateFamilyEntries(std::vector<std::string> &entries, const std::vector<Record> &records, EntryText entryText)
{
    for (std::string &entry : entries) {
        const std::string name = TextPieces::toLower(std::string_view(entry).substr(0, entry.find(kEntrySeparator)));
        const auto match = std::find_if(records.begin(), records.end(), [&](const Record &record) {
            return TextPieces::toLower(record.sFamily) == name;
        });
        if (match != records.end())
            entry = entryText(*match);
    }
}

std::optional<Refusal> fill(EditorDocument &document, const std::vector<GameView::Call> &calls)
{
    for (const Slot &slot : slotTable()) {
        const GameView::Call *call = lastCall(calls, slot.statement);
        const Value *value = call ? argumentOf(*call, slot.argument) : nullptr;
        if (!value)
            continue;
        std::optional<Refusal> refusal;
        std::visit([&](auto member) {
            refusal = take(*value, fieldOf(document, member), call->line, argumentName(slot.statement, slot.argument));
        }, slot.member);
        if (refusal)
            return refusal;
    }
    document.bHasMiscValues = lastCall(calls, "setMiscValues") != nullptr;

    for (const GameView::Call &call : calls) {
        if (call.name != "AddWeaponResult")
            continue;
        WeaponResult result;
        if (auto refusal = readResult(call, result))
            return refusal;
        document.addResult(result);
    }

    if (const GameView::Call *call = lastCall(calls, "setPenetration")) {
        std::vector<FamilyPenetration> records;
        auto refusal = readFamilies(*call, 3, {}, records,
                                    [&](const Value &, const Value &value, FamilyPenetration &record,
                                        const std::string &what) {
                                        return take(value, record.fPenetration, call->line, what);
                                    });
        if (refusal)
            return refusal;
        if (!records.empty())
            document.FamilyPenetrations = records;
        updateFamilyEntries(document.lstArmorFamilies, records, [](const FamilyPenetration &r) {
            return r.sFamily + std::string(kEntrySeparator) + NumberText::realText(r.fPenetration);
        });
    }
    if (const GameView::Call *call = lastCall(calls, "setAccuracy")) {
        std::vector<FamilyAccuracy> records;
        auto refusal = readFamilies(*call, 2, "damage", records,
                                    [&](const Value &table, const Value &value, FamilyAccuracy &record,
                                        const std::string &what) {
                                        std::optional<Refusal> refused = take(value, record.fAccuracy, call->line, what);
                                        if (const Value *damage = table.field("damage"); damage && !refused)
                                            refused = take(*damage, record.iAlwaysDamage, call->line,
                                                           "the damage flag of " + what);
                                        return refused;
                                    });
        if (refusal)
            return refusal;
        if (!records.empty())
            document.FamilyAccuracies = records;
        updateFamilyEntries(document.lstAccuracy, records, [](const FamilyAccuracy &r) {
            return r.sFamily + std::string(kEntrySeparator) + NumberText::realText(r.fAccuracy)
                   + std::string(kEntrySeparator) + NumberText::intText(r.iAlwaysDamage);
        });
    }
    return std::nullopt;
}

bool isKnownStatement(std::string_view name)
{
    return name == "AddWeaponResult"
           || std::any_of(slotTable().begin(), slotTable().end(), [&](const Slot &slot) { return slot.statement == name; });
}

// The lines of the calls the editor does not know, which a normalised save writes at the end.
std::vector<std::string> unknownLines(std::string_view bytes, const std::vector<GameView::Call> &calls)
{
    const std::vector<std::string> lines = TextPieces::splitLines(bytes);
    std::vector<std::string> kept;
    int last = 0;
    for (const GameView::Call &call : calls) {
        if (isKnownStatement(call.name) || call.line <= last || call.line > static_cast<int>(lines.size()))
            continue;
        last = call.line;
        kept.push_back(lines[static_cast<std::size_t>(call.line - 1)]);
    }
    return kept;
}

} // namespace

// The tree of the script's text, when it reads every value as the game does.
static void keepText(GameScript &script, std::string_view bytes, const std::vector<GameView::Call> &calls)
{
    script.bytes = std::string(bytes);
    script.syntax = {};
    script.notes.clear();
    script.keepsText = false;
    ScriptSyntax::Parse parse = ScriptSyntax::ParseScript(bytes);
    if (!parse.ok)
        script.notes.push_back("Line " + NumberText::intText(parse.line) + ": " + parse.reason);
    else if (std::optional<std::string> difference = compareWithGame(parse.script, calls))
        script.notes.push_back(std::move(*difference));
    else
        script.syntax = std::move(parse.script);
    script.keepsText = script.notes.empty();
}

std::optional<Value> evaluate(const Expression &expression)
{
    Value value;
    switch (expression.kind) {
    case Expression::Kind::Text: {
        std::optional<std::string> text = ScriptSyntax::textValue(expression.token.text);
        if (!text)
            return std::nullopt;
        value.kind = Value::Kind::Text;
        value.text = std::move(*text);
        return value;
    }
    case Expression::Kind::Name: {
        const std::string &name = expression.token.text;
        if (name == "NewWeaponType") {
            value.kind = Value::Kind::Weapon;
        } else if (name == "true" || name == "false") {
            value.kind = Value::Kind::Boolean;
            value.number = name == "true" ? 1 : 0;
        } else if (name != "nil") {
            // Any other name is one the game's view records calls of, under that name.
            value.kind = Value::Kind::Other;
            value.text = name;
        }
        return value;
    }
    case Expression::Kind::Table: {
        value.kind = Value::Kind::Table;
        double position = 0;
        for (const ScriptSyntax::Field &field : expression.fields) {
            Value key;
            if (field.key) {
                key.kind = Value::Kind::Text;
                key.text = field.key->text;
            } else {
                key.kind = Value::Kind::Number;
                key.number = ++position;
            }
            std::optional<Value> entry = evaluate(field.value);
            if (!entry)
                return std::nullopt;
            const auto same = std::find_if(value.entries.begin(), value.entries.end(),
                                           [&](const Value::Entry &e) { return e.key == key; });
            if (same != value.entries.end())
                value.entries.erase(same);
            if (entry->kind != Value::Kind::Nil)
                value.entries.push_back({std::move(key), std::move(*entry)});
        }
        std::sort(value.entries.begin(), value.entries.end(), GameView::entryBefore);
        return value;
    }
    case Expression::Kind::Group:
        return evaluate(expression.operands[0]);
    default: {
        const std::optional<Numeral> number = numeral(expression);
        if (!number)
            return std::nullopt;
        value.kind = Value::Kind::Number;
        value.number = asReal(*number);
        return value;
    }
    }
}

std::optional<std::string> compareWithGame(const ScriptSyntax::Script &syntax, const std::vector<GameView::Call> &calls)
{
    const auto line = [](int n) { return "Line " + NumberText::intText(n) + ": "; };
    for (std::size_t i = 0; i < syntax.statements.size(); ++i) {
        const ScriptSyntax::Statement &statement = syntax.statements[i];
        if (i >= calls.size() || calls[i].name != statement.name.text)
            return line(statement.name.line) + "the game does not call " + statement.name.text + " here";
        if (calls[i].arguments.size() != statement.arguments.size())
            return line(statement.name.line) + "the game reads " + statement.name.text + " with "
                   + NumberText::intText(static_cast<long long>(calls[i].arguments.size())) + " arguments";
        for (std::size_t k = 0; k < statement.arguments.size(); ++k) {
            const std::optional<Value> value = evaluate(statement.arguments[k].value);
            if (!value || !(*value == calls[i].arguments[k]))
                return line(statement.name.line) + "the game reads " + argumentName(statement.name.text, k) + " as "
                       + GameView::valueText(calls[i].arguments[k]) + ", the editor as "
                       + (value ? GameView::valueText(*value) : std::string("no value it can tell"));
        }
    }
    if (calls.size() > syntax.statements.size())
        return line(calls[syntax.statements.size()].line) + "the game calls " + calls[syntax.statements.size()].name
               + " where the editor sees no statement";
    return std::nullopt;
}

ReadResult ReadGameScript(EditorDocument &document, std::string_view bytes, GameScript &script)
{
    document.setNoResults();
    document.strScriptLines.assign(1, std::string());
    document.FamilyPenetrations.assign(1, FamilyPenetration{});
    document.FamilyAccuracies.assign(1, FamilyAccuracy{});
    document.Weapon.intError = 0;
    document.bHasMiscValues = false;

    // A value the script does not set is the same whatever was opened before: a fresh document's.
    EditorDocument fresh;
    for (const Slot &slot : slotTable())
        std::visit([&](auto member) { fieldOf(document, member) = fieldOf(fresh, member); }, slot.member);

    const GameView::Run run = GameView::RunScript(bytes);
    if (!run.ok)
        return {ReadOutcome::Failed, run.line, run.reason};
    if (std::optional<Refusal> refusal = fill(document, run.calls))
        return {ReadOutcome::Failed, refusal->line, std::move(refusal->reason)};
    std::vector<std::string> unknown = unknownLines(bytes, run.calls);
    if (!unknown.empty())
        document.strScriptLines = std::move(unknown);

    script = GameScript{};
    keepText(script, bytes, run.calls);
    return {};
}

void rememberSave(GameScript &script, std::string_view bytes, const EditorDocument &document)
{
    const GameView::Run run = GameView::RunScript(bytes);
    keepText(script, bytes, run.calls);
    if (!run.ok) {
        script.keepsText = false;
        script.notes.assign(1, "Line " + NumberText::intText(run.line) + ": " + run.reason);
    }
    script.opened = document;
}

ReadResult OpenGameScript(EditorDocument &document, std::string_view bytes, GameScript &script)
{
    ReadResult result = ReadGameScript(document, bytes, script);
    if (!result.completed())
        return result;
    document.Weapon.InitializeWeaponValues();
    if (std::optional<std::string> problem = document.fillFamilyTables())
        return {ReadOutcome::Failed, 0, std::move(*problem)};
    script.opened = document;
    return result;
}

} // namespace GameReading
