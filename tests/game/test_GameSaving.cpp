// SPDX-License-Identifier: MIT
// Saves in the game reading mode judged by Lua: generated scripts in the forms real mods use get
// random edits through the document, and after each save the game must read exactly the edited
// values changed, while the bytes outside the edited value, line or statement stay.
#include "GameReading.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace {

using GameView::Call;
using GameView::Value;
using W = KorvathWeapon;
using D = EditorDocument;
using Random = std::mt19937;

// Which field each argument of a statement sets, from argument 1 on, in the game's order.
const std::vector<std::pair<std::string, std::vector<GameReading::Member>>> kArguments = {
    {"StartWeaponConfig",
     {&W::sWeaponType, &W::sWeaponFireType, &W::sWeaponFireName, &W::sActivation, &W::fWeaponFireSpeed,
      &W::fWeaponFireRange, &W::fWeaponFireRadius, &W::fWeaponFireLifetime, &W::fWeaponFireMisc1, &W::iWeaponFireAxis,
      &W::iMaxEffectsSpawned, &W::iUseVelocityPred, &W::iCheckLineOfFire, &W::fFireTime, &W::fBurstFireTime,
      &W::fBurstWaitTime, &W::iShootAtSecondaries, &W::iShootAtSurroundings, &W::fMaxAzimuthSpeed,
      &W::fMaxDeclinationSpeed, &W::fSpeedMultiplierWhenPointingAtTarget, &W::sWeaponShieldPenetration,
      &W::iTrackTargetsOutsideRange, &W::fWaitUntilCodeRedState, &W::iInstantHitThreshold}},
    {"setAngles", {&D::fFiringArc, &D::fLeftRotation, &D::fRightRotation, &D::fDownRotation, &D::fUpRotation}},
    {"setMiscValues", {&D::fBarrelRecoil, &D::fSlaveFireDelay}},
    {"setPenetration", {&D::iFieldPenetration, &D::fDefaultPenetration}},
    {"setAccuracy", {&D::iDefaultAccuracy}},
};
const std::vector<std::string> kArmour = {"PlanetKillerArmour", "Heavy_Armour", "Alpha", "Beta", "Gamma"};
const std::vector<std::string> kAttack = {"Fighter", "Light_Craft", "Alpha", "Corvette", "Gamma"};

std::size_t pick(Random &random, std::size_t n) { return static_cast<std::size_t>(random() % n); }
template<typename T>
const T &any(Random &random, const std::vector<T> &from) { return from[pick(random, from.size())]; }
using Texts = std::vector<std::string>;

// A script in one of the forms real mods use. Results stand alone on one line each (now and then
// twice, copied); the other statements may span lines, share one, carry comments and positional
// table entries.
std::string generate(Random &random)
{
    const std::string lineEnd = pick(random, 2) ? "\r\n" : "\n";
    const auto inlineGap = [&] { return any<std::string>(random, {"", "", " ", "\t", " --[[ c ]] "}); };
    const auto gap = [&] { return pick(random, 5) ? inlineGap() : any(random, Texts{lineEnd + "    ", " -- why" + lineEnd}); };
    const auto whole = [&] {
        const std::string n = std::to_string(pick(random, 40));
        return any(random, Texts{n, n, "-" + n, "0x1" + n, n + "*2", "(" + n + ")", "1E2", "70//2"});
    };
    const auto real = [&] {
        const std::string n = std::to_string(pick(random, 40));
        return any(random, Texts{n, n + ".5", "0.60", ".15", "1E-05", "2.5e3", "-" + n, n + " * 1.4", "70/2", "7/2", "-(5)", "0x1F", "-0.5 * -1"});
    };
    const auto text = [&] {
        return any<std::string>(random, {"\"Hit\"", "'Push'", "\"\"", "\"a\\\\b\"", "\"say \\\"hi\\\"\"", "[[long]]", "\"Beam_Ion\"", "\"a\\tb\"",
                                         "[==[x]]y]==]"});
    };
    const auto call = [&](const std::string &name, const Texts &arguments, bool oneLine) {
        std::string out = name + "(" + (oneLine ? inlineGap() : gap()) + "NewWeaponType";
        for (const std::string &argument : arguments)
            out += (oneLine ? inlineGap() : gap()) + "," + (oneLine ? inlineGap() : gap()) + argument;
        return out + inlineGap() + ")" + any<std::string>(random, {"", ";", " ;", ";;"});
    };
    // Tables of one family each, with a damage flag or a positional entry now and then, and one of several.
    const auto tables = [&](Texts arguments, const Texts &families, bool accuracy) {
        std::string shared;
        for (const std::string &family : families) {
            const std::string entry = inlineGap() + family + inlineGap() + "=" + inlineGap() + real();
            if (pick(random, 3) == 0)
                continue;
            if (pick(random, 2))
                arguments.push_back("{" + entry + (accuracy && pick(random, 2) ? ", damage=1" : "") + (pick(random, 4) ? "" : ", 7") + "}");
            else
                shared += (shared.empty() ? "" : any(random, Texts{",", ";", "," + lineEnd})) + entry;
        }
        if (!shared.empty())
            arguments.push_back("{" + std::string(pick(random, 4) ? "" : "3, ") + shared
                                + (accuracy && pick(random, 6) == 0 ? ", damage=1" : "") + (pick(random, 2) ? "," : "") + "}");
        return arguments;
    };

    Texts statements; // each with its line end
    const auto add = [&](const std::string &statement) { statements.push_back(statement + (pick(random, 4) ? "" : "   -- note") + lineEnd); };
    if (pick(random, 10)) {
        Texts config = {text(), text(), text(), text()};
        for (const char kind : std::string_view("rrrrriiiirrriirrrtiri")) // arguments 5 to 25
            config.push_back(kind == 't' ? text() : kind == 'i' ? whole() : real());
        add(call("StartWeaponConfig", config, false));
    }
    std::string result;
    for (std::size_t i = pick(random, 4); i > 0; --i) {
        if (result.empty() || pick(random, 4))
            result = any<std::string>(random, {"", "  "})
                     + call("AddWeaponResult", {text(), pick(random, 2) ? text() : "\"SpawnWeaponFire\"", "\"Target\"", real(), real(), text()}, true);
        add(result);
    }
    for (std::size_t i = pick(random, 4); i > 0; --i) // more than once now and then: the game keeps the last
        add(call("setAngles", {real(), real(), real(), real(), real()}, false));
    if (pick(random, 2))
        add(call("setMiscValues", {real(), real()}, false));
    if (pick(random, 4))
        add(call("setPenetration", tables({whole(), real()}, kArmour, false), false));
    if (pick(random, 4))
        add(call("setAccuracy", tables({pick(random, 3) ? whole() : "0.3"}, kAttack, true), false));
    for (std::size_t i = pick(random, 3); i > 0; --i)
        add(any(random, Texts{"setMissileKiller(NewWeaponType,1)", "setAccuracyFalloff(NewWeaponType, 0.5, 1E-05)",
                              "set_Foo_Bar(NewWeaponType,{1,2,\"x\"},{a=1})", call("setFrustratedTimers", {"5", "10"}, false)}));
    std::shuffle(statements.begin(), statements.end(), random);
    std::string bytes = any(random, Texts{"", "-- generated" + lineEnd, "--[[ block" + lineEnd + "  comment ]]" + lineEnd});
    for (std::size_t i = 0; i < statements.size(); ++i) {
        std::string statement = statements[i];
        // Two statements on one line, when neither is a result and the first has no comment.
        if (i + 1 < statements.size() && (statement + statements[i + 1]).find("Result") == std::string::npos
            && statement.find("--") == std::string::npos && pick(random, 5) == 0)
            statement.resize(statement.size() - lineEnd.size()), statement += " ";
        bytes += statement + (pick(random, 5) ? "" : lineEnd);
    }
    if (pick(random, 3) == 0)
        bytes.resize(bytes.find_last_not_of(lineEnd) + 1); // no final line end
    return bytes;
}

Value number(double n) { return {Value::Kind::Number, n, {}, {}}; }
Value text(const std::string &t) { return {Value::Kind::Text, 0, t, {}}; }
template<typename T>
Value valueOf(const T &v)
{
    if constexpr (std::is_same_v<T, std::string>)
        return text(v);
    else
        return number(static_cast<double>(v));
}
const Value kWeapon = {Value::Kind::Weapon, 0, {}, {}};

bool isFamilyStatement(std::string_view name) { return name == "setPenetration" || name == "setAccuracy"; }

// A family statement with all its tables merged into its last argument, so that a family that joins
// a table or gets one of its own reads the same: "Alpha" gives the value, "Alpha damage" its
// table's damage flag.
Call canonical(const Call &call)
{
    if (!isFamilyStatement(call.name))
        return call;
    Call out{call.name, call.line, {}};
    Value merged{Value::Kind::Table, 0, {}, {}};
    double positional = 0;
    for (const Value &argument : call.arguments) {
        if (argument.kind != Value::Kind::Table)
            out.arguments.push_back(argument);
        for (const Value::Entry &entry : argument.entries) {
            if (entry.key.kind != Value::Kind::Text)
                merged.entries.push_back({number(++positional), entry.value});
            else if (entry.key.text != "damage")
                merged.entries.push_back(entry);
            if (entry.key.kind == Value::Kind::Text && entry.key.text != "damage" && argument.field("damage"))
                merged.entries.push_back({text(entry.key.text + " damage"), *argument.field("damage")});
        }
    }
    std::sort(merged.entries.begin(), merged.entries.end(), GameView::entryBefore);
    out.arguments.push_back(merged);
    return out;
}

std::vector<Call> view(const std::string &bytes)
{
    const GameView::Run run = GameView::RunScript(bytes);
    EXPECT_TRUE(run.ok) << run.reason;
    std::vector<Call> calls;
    std::transform(run.calls.begin(), run.calls.end(), std::back_inserter(calls), canonical);
    return calls;
}

// The last call of a name, or its nth.
int callOf(const std::vector<Call> &calls, std::string_view name, int nth = -1)
{
    int found = -1, seen = 0;
    for (std::size_t c = 0; c < calls.size(); ++c)
        if (calls[c].name == name && (nth < 0 || seen++ == nth))
            found = static_cast<int>(c);
    return found;
}

// The arguments before a family statement's tables.
std::size_t plainArguments(const Call &call) { return call.arguments.size() - (isFamilyStatement(call.name) ? 1 : 0); }

// The call a save adds for a statement the script lacked: the document's values, then the families.
Call addedCall(EditorDocument &d, const std::string &name, const std::vector<Value::Entry> &families = {})
{
    Call call{name, 0, {kWeapon}};
    for (const GameReading::Member &member : std::find_if(kArguments.begin(), kArguments.end(), [&](const auto &s) { return s.first == name; })->second)
        std::visit([&](auto m) { call.arguments.push_back(valueOf(fieldOf(d, m))); }, member);
    if (isFamilyStatement(name))
        call.arguments.push_back({Value::Kind::Table, 0, {}, families});
    return call;
}

Call resultCall(const WeaponResult &r)
{
    return {"AddWeaponResult", 0, {kWeapon, text(r.sCondition), text(r.sEffect), text(r.sTarget), number(r.fMinEffect),
                                   number(r.fMaxEffect), text(r.sSpawnedWeaponEffect)}};
}

// What one edit may do to the bytes: nothing, change a value (or several) of the call on a line,
// insert within that call or after its line, remove that line, or add a statement somewhere.
struct Step
{
    enum Kind { None, InPlace, Values, Within, AfterLine, Removal, Added } kind = None;
    int line = 0;
    Call added = {};
};

// Makes one random edit in the document and the same edit in the game's view it must give. A value
// is set to neither its current value nor the one it was saved with: a value set back is no change,
// and the script keeps its own text for it.
Step edit(Random &random, EditorDocument &d, const EditorDocument &saved, std::vector<Call> &expected, bool inPlaceOnly)
{
    const std::size_t results = d.lstWeaponResults.size();
    for (int tries = 0; tries < 100; ++tries) {
        const std::size_t kind = pick(random, 6), i = results ? pick(random, results) : 0;
        const int c = callOf(expected, "AddWeaponResult", static_cast<int>(i)), last = callOf(expected, "AddWeaponResult");
        if (kind < 2) { // a single value of a statement
            const auto &[name, members] = any(random, kArguments);
            const int s = callOf(expected, name);
            const std::size_t a = pick(random, members.size());
            if (s < 0 ? inPlaceOnly || name == "setMiscValues" : a + 1 >= plainArguments(expected[s]))
                continue;
            std::visit([&](auto member) {
                auto &field = fieldOf(d, member);
                using T = std::remove_reference_t<decltype(field)>;
                std::vector<T> choices;
                if constexpr (std::is_same_v<T, std::string>)
                    choices = {"Beam_X", "a\\b", "say \"hi\"", "", "Flak_Burst"};
                else if constexpr (std::is_same_v<T, double>)
                    choices = {30, 0.125, 1E-05, 2500, -7.5, 1234567.25};
                else
                    choices = {3, -2, 100, 0};
                std::erase(choices, field);
                std::erase(choices, fieldOf(const_cast<EditorDocument &>(saved), member));
                field = any(random, choices);
                if (s >= 0)
                    expected[s].arguments[a + 1] = valueOf(field);
            }, members[a]);
            return s < 0 ? Step{Step::Added, 0, canonical(addedCall(d, name))} : Step{Step::InPlace, expected[s].line};
        }
        if (kind == 2 && !(last < 0 && inPlaceOnly)) { // a new result
            const WeaponResult r{any<std::string>(random, {"Hit", "Miss"}), any<std::string>(random, {"DamageHealth", "SpawnWeaponFire"}),
                                 "Target", 5, 12.5, any<std::string>(random, {"", "Sparks", "a\\b \"c\""})};
            d.addResult(r);
            if (last < 0)
                return {Step::Added, 0, resultCall(r)};
            expected.insert(expected.begin() + last + 1, resultCall(r));
            return {Step::AfterLine, expected[last].line};
        }
        // A removed result; twins only their place tells apart, so that either line may go, are left.
        if (kind == 3 && results && std::count(d.lstWeaponResults.begin(), d.lstWeaponResults.end(), d.lstWeaponResults[i]) == 1) {
            EXPECT_EQ(d.removeResult(i), std::nullopt);
            const int line = expected[c].line;
            expected.erase(expected.begin() + c);
            return {Step::Removal, line};
        }
        if (kind == 4 && results) { // a changed result
            WeaponResult r = d.WeaponResults[i];
            Step::Kind changed = Step::InPlace;
            if (r.sEffect != "SpawnWeaponFire" && pick(random, 3) == 0) { // its line's last text was never the spawned effect
                expected[c].arguments[2] = text(r.sEffect = "SpawnWeaponFire");
                expected[c].arguments[6] = text(r.sSpawnedWeaponEffect);
                changed = Step::Values;
            } else if (r.sEffect != "SpawnWeaponFire" || pick(random, 2)) {
                expected[c].arguments[5] = number(r.fMaxEffect = r.fMaxEffect == 99.5 ? 98 : 99.5);
            } else {
                expected[c].arguments[6] = text(r.sSpawnedWeaponEffect = r.sSpawnedWeaponEffect == "Spark_2" ? "" : "Spark_2");
            }
            EXPECT_TRUE(d.applyResult(i, r));
            return {changed, expected[c].line};
        }
        if (kind == 5) { // a family value
            const bool accuracy = pick(random, 2);
            const std::size_t f = pick(random, kArmour.size());
            const std::string name = accuracy ? "setAccuracy" : "setPenetration", family = (accuracy ? kAttack : kArmour)[f];
            const int s = callOf(expected, name);
            Value *table = s >= 0 ? &expected[s].arguments.back() : nullptr;
            const auto entry = table ? std::find_if(table->entries.begin(), table->entries.end(), [&](const auto &e) { return e.key == text(family); })
                                     : std::vector<Value::Entry>::iterator{};
            if (inPlaceOnly && (!table || entry == table->entries.end()))
                continue;
            std::vector<std::pair<double, const char *>> values = {{0.5, "0.5"}, {0.125, "0.125"}, {1E-05, "1E-05"}};
            for (const EditorDocument *document : {&std::as_const(d), &saved})
                std::erase_if(values, [&](const auto &v) {
                    return v.first == (accuracy ? document->FamilyAccuracies[f].fAccuracy : document->FamilyPenetrations[f].fPenetration);
                });
            const auto [value, valueText] = any(random, values);
            EXPECT_EQ(accuracy ? d.applyAccuracy(f, valueText, d.FamilyAccuracies[f].iAlwaysDamage != 0)
                               : d.applyPenetration(f, valueText), D::ApplyOutcome::Applied);
            if (!table)
                return {Step::Added, 0, canonical(addedCall(d, name, {{text(family), number(value)}}))};
            if (entry != table->entries.end()) {
                entry->value = number(value);
                return {Step::InPlace, expected[s].line};
            }
            table->entries.push_back({text(family), number(value)});
            std::sort(table->entries.begin(), table->entries.end(), GameView::entryBefore);
            return {Step::Within, expected[s].line};
        }
    }
    return {};
}

std::size_t lineStart(const std::string &bytes, int line)
{
    std::size_t at = 0;
    for (int l = 1; l < line && at < bytes.size(); ++l)
        at = std::min(bytes.find('\n', at), bytes.size() - 1) + 1;
    return at;
}

// Checks the bytes a save changed against what the edit allows.
void checkBytes(const std::string &before, const std::string &after, const std::vector<Call> &calls, const Step &step)
{
    const std::string lineEnd = before.find("\r\n") != std::string::npos ? "\r\n" : "\n";
    const bool anyLineEnd = before.find('\n') != std::string::npos;
    int strayLineEnds = 0;
    for (std::size_t i = 0; i < after.size() && anyLineEnd; ++i) {
        const std::string found = after.compare(i, 2, "\r\n") == 0 ? "\r\n" : std::string(1, after[i]);
        strayLineEnds += (found[0] == '\r' || found[0] == '\n') && found != lineEnd;
        i += found.size() - 1;
    }
    EXPECT_EQ(strayLineEnds, 0) << "line ends of another style";
    if (step.kind != Step::Removal && anyLineEnd) { // a removal may leave a blank line's end last
        EXPECT_EQ(before.ends_with('\n'), after.ends_with('\n')) << "final line end";
    }
    std::size_t prefix = 0, suffix = 0;
    while (prefix < std::min(before.size(), after.size()) && before[prefix] == after[prefix])
        ++prefix;
    while (suffix < std::min(before.size(), after.size()) && before.rbegin()[suffix] == after.rbegin()[suffix])
        ++suffix;
    // The call's text: from its name to the name of the next call.
    const Call *call = nullptr, *next = nullptr;
    for (const Call &c : calls) {
        if (c.line == step.line && !call)
            call = &c;
        else if (c.line > step.line && (!next || c.line < next->line))
            next = &c;
    }
    const std::size_t from = call ? before.find(call->name, lineStart(before, step.line)) : 0;
    const std::size_t to = next ? before.find(next->name, lineStart(before, next->line)) : before.size();
    // Where an insertion of the added bytes alone may stand.
    const std::size_t first = before.size() - std::min(suffix, before.size()), last = std::min(prefix, before.size());
    EXPECT_TRUE(step.kind != Step::None || after == before) << "a save without changes changed the script";
    if (step.kind == Step::InPlace || step.kind == Step::Values) {
        const std::size_t end = std::min(suffix, std::min(before.size(), after.size()) - prefix);
        const std::string was = before.substr(prefix, before.size() - end - prefix), now = after.substr(prefix, after.size() - end - prefix);
        EXPECT_TRUE(from <= prefix && prefix + was.size() <= to) << "outside the statement: " << was << " -> " << now;
        for (const std::string &s : {was, now})
            EXPECT_TRUE(step.kind == Step::Values || (s.find_first_of(",\r\n") == std::string::npos && s.find("--") == std::string::npos))
                << "more than a value: " << was << " -> " << now;
    }
    if (step.kind == Step::Within || step.kind == Step::AfterLine || step.kind == Step::Added) {
        EXPECT_TRUE(after.size() > before.size() && first <= last) << "a save that adds changed bytes of the script";
        // A family within its statement; a result after the last one, at the latest on the next line.
        const std::size_t hi = step.kind == Step::AfterLine ? lineStart(before, step.line + 1) : to;
        EXPECT_TRUE(step.kind == Step::Added || (first <= hi && from <= last)) << "inserted at " << first << " to " << last << ", not within " << from << " to " << hi;
    }
    if (step.kind == Step::Removal) {
        const std::size_t start = lineStart(before, step.line), end = before.find('\n', start);
        if (std::count_if(calls.begin(), calls.end(), [&](const Call &c) { return c.line == step.line; }) > 1) {
            EXPECT_TRUE(prefix >= start && before.size() - std::min(suffix, before.size() - prefix) <= end) << "beyond the line";
            return; // not alone on its line
        }
        std::string expected = before;
        if (end != std::string::npos)
            expected.erase(start, end + 1 - start);
        else
            expected.erase(start - std::min(start, lineEnd.size()));
        EXPECT_EQ(after, expected) << "a removed result goes with its line";
    }
}

// Equal kinds and contents, numbers to the 15 digits the editor keeps.
bool same(const Value &a, const Value &b)
{
    bool equal = a.kind == b.kind && a.text == b.text && a.entries.size() == b.entries.size()
                 && std::abs(a.number - b.number) <= std::abs(a.number) * 1E-14;
    for (std::size_t i = 0; equal && i < a.entries.size(); ++i)
        equal = same(a.entries[i].key, b.entries[i].key) && same(a.entries[i].value, b.entries[i].value);
    return equal;
}

// The game's view after a save against the expected one, with the call a save adds compared apart.
// Results are compared among themselves: a save that removes and adds results in one may write an
// added one over a removed one's line. A spawned effect counts only for SpawnWeaponFire, as the
// editor reads it.
void checkView(std::vector<Call> expected, std::vector<Call> after, const Step &step)
{
    if (step.kind == Step::Added) {
        const auto added = std::find_if(after.begin(), after.end(), [&](const Call &c) { return c.name == step.added.name; });
        ASSERT_NE(added, after.end()) << "no " << step.added.name << " added";
        expected.push_back(step.added);
        std::rotate(added, added + 1, after.end());
    }
    ASSERT_EQ(after.size(), expected.size());
    for (std::vector<Call> *calls : {&expected, &after})
        std::stable_partition(calls->begin(), calls->end(), [](const Call &c) { return c.name != "AddWeaponResult"; });
    for (std::size_t c = 0; c < after.size(); ++c) {
        if (expected[c].name == "AddWeaponResult" && !(expected[c].arguments.at(2) == text("SpawnWeaponFire")))
            for (std::vector<Call> *calls : {&expected, &after})
                (*calls)[c].arguments.resize(std::min<std::size_t>((*calls)[c].arguments.size(), 6));
        EXPECT_EQ(after[c].name, expected[c].name);
        EXPECT_EQ(after[c].arguments.size(), expected[c].arguments.size()) << after[c].name;
        for (std::size_t a = 0; a < std::min(after[c].arguments.size(), expected[c].arguments.size()); ++a)
            EXPECT_TRUE(same(after[c].arguments[a], expected[c].arguments[a])) << after[c].name << " argument " << a << ": "
                << GameView::valueText(after[c].arguments[a]) << ", expected " << GameView::valueText(expected[c].arguments[a]);
    }
}

// The document holds what the game reads, where its fields can hold it (family values as the 15
// digits of their entries).
void checkRead(EditorDocument &d, const std::vector<Call> &calls)
{
    for (const auto &[name, members] : kArguments) {
        const int c = callOf(calls, name);
        for (std::size_t a = 0; c >= 0 && a < members.size() && a + 1 < plainArguments(calls[c]); ++a)
            std::visit([&, game = calls[c].arguments[a + 1]](auto member) {
                const auto &field = fieldOf(d, member);
                if (std::is_floating_point_v<std::remove_cvref_t<decltype(field)>> || game.number == std::trunc(game.number)) {
                    EXPECT_EQ(valueOf(field), game) << name << " argument " << a + 1;
                }
            }, members[a]);
    }
    const int p = callOf(calls, "setPenetration"), a = callOf(calls, "setAccuracy");
    for (std::size_t f = 0; f < kArmour.size(); ++f) {
        if (const Value *v = p >= 0 ? calls[p].arguments.back().field(kArmour[f]) : nullptr) {
            EXPECT_TRUE(same(number(d.FamilyPenetrations[f].fPenetration), *v)) << kArmour[f];
        }
        if (const Value *v = a >= 0 ? calls[a].arguments.back().field(kAttack[f]) : nullptr) {
            const Value *damage = calls[a].arguments.back().field(kAttack[f] + " damage");
            EXPECT_TRUE(same(number(d.FamilyAccuracies[f].fAccuracy), *v)) << kAttack[f];
            EXPECT_EQ(d.FamilyAccuracies[f].iAlwaysDamage, damage ? damage->number : 0) << kAttack[f];
        }
    }
}

} // namespace

TEST(GameSaving, GeneratedScriptsKeepEveryByteButTheEditsAndTheGameReadsExactlyTheEdits)
{
    const unsigned seed = 23;
    Random random(seed);
    for (int round = 0; round < 1500; ++round) {
        const std::string original = generate(random);
        SCOPED_TRACE("seed " + std::to_string(seed) + ", round " + std::to_string(round) + ":\n" + original);
        EditorDocument document;
        document.setFamilies(kArmour, kAttack);
        GameReading::GameScript script;
        const ReadResult read = GameReading::OpenGameScript(document, original, script);
        ASSERT_TRUE(read.completed()) << read.message();
        ASSERT_TRUE(script.keepsText) << script.notes.front();
        std::string bytes = original;
        std::vector<Call> calls = view(bytes);
        checkRead(document, calls);
        ASSERT_EQ(GameReading::SaveGameScript(script, document).bytes, bytes);

        // Saves of one edit each, every save after the one before; then several edits in one save.
        for (int save = 0; save < 4; ++save) {
            std::vector<Call> expected = calls;
            Step step = edit(random, document, script.opened, expected, save == 3);
            for (std::size_t more = save == 3 ? 1 + pick(random, 3) : 0; more > 0; --more)
                step = edit(random, document, script.opened, expected, true);
            const GameReading::SaveText saved = GameReading::SaveGameScript(script, document);
            SCOPED_TRACE("save " + std::to_string(save) + ":\n" + saved.bytes);
            ASSERT_TRUE(saved.problems.empty()) << saved.problems.front();
            const std::vector<Call> after = view(saved.bytes);
            checkView(expected, after, step);
            if (save < 3)
                checkBytes(bytes, saved.bytes, calls, step);
            if (HasFailure())
                return;
            GameReading::rememberSave(script, saved.bytes, document);
            bytes = saved.bytes;
            calls = after;
        }
    }
}
