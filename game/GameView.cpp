// SPDX-License-Identifier: MIT
#include "GameView.h"

#include "NumberText.h"

#include <lua.hpp>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace GameView {

namespace {

// Limits far above any weapon script (a stock script runs about 2,000 instructions, makes about 50
// calls and needs about 30 KB), low enough that a hostile one ends within milliseconds.
constexpr std::size_t kMemoryLimit = 16u << 20;
constexpr int kHookEvery = 100;
constexpr long kInstructionLimit = 1'000'000;
constexpr std::size_t kCallLimit = 20'000;
constexpr std::size_t kRecordedLimit = 4u << 20;  // bytes of recorded texts and values
constexpr int kTableDepthLimit = 8;
constexpr int kCallDepthLimit = 10'000;

// Lua reaches this through its userdata pointers. Lua errors are longjmps, so the functions Lua calls
// keep no C++ object with a destructor alive across a Lua API call that can raise one.
struct Sandbox
{
    std::size_t memoryUsed = 0;
    long instructions = 0;
    int lastLine = 0;
    std::size_t recorded = 0;
    std::vector<Call> calls;
};

char weaponMarker; // its address is NewWeaponType

void *allocate(void *userData, void *block, std::size_t oldSize, std::size_t newSize)
{
    auto *sandbox = static_cast<Sandbox *>(userData);
    // Without a block, oldSize tells the kind of object, not a size.
    const std::size_t held = block ? oldSize : 0;
    if (newSize == 0) {
        sandbox->memoryUsed -= held;
        std::free(block);
        return nullptr;
    }
    if (newSize > held && sandbox->memoryUsed + (newSize - held) > kMemoryLimit)
        return nullptr;
    void *moved = std::realloc(block, newSize);
    if (moved)
        sandbox->memoryUsed = sandbox->memoryUsed - held + newSize;
    return moved;
}

Sandbox &sandboxOf(lua_State *L)
{
    void *userData = nullptr;
    lua_getallocf(L, &userData);
    return *static_cast<Sandbox *>(userData);
}

void countInstructions(lua_State *L, lua_Debug *ar)
{
    Sandbox &sandbox = sandboxOf(L);
    if (lua_getinfo(L, "l", ar) && ar->currentline > 0)
        sandbox.lastLine = ar->currentline;
    sandbox.instructions += kHookEvery;
    // A deep recursion would otherwise run until the memory limit, which takes far longer.
    lua_Debug deepest;
    if (lua_getstack(L, kCallDepthLimit, &deepest)) {
        lua_pushfstring(L, "script:%d: nests calls too deeply (more than %d levels)", sandbox.lastLine,
                        kCallDepthLimit);
        lua_error(L);
    }
    if (sandbox.instructions > kInstructionLimit) {
        lua_pushfstring(L, "script:%d: runs too long (more than %d million instructions)", sandbox.lastLine,
                        static_cast<int>(kInstructionLimit / 1'000'000));
        lua_error(L);
    }
}

int callLine(lua_State *L)
{
    lua_Debug ar;
    if (lua_getstack(L, 1, &ar) && lua_getinfo(L, "l", &ar))
        return ar.currentline;
    return 0;
}

Value valueAt(lua_State *L, int index, int depth, std::size_t &recorded);
int recorder(lua_State *L);

void tableEntries(lua_State *L, int index, int depth, std::size_t &recorded, Value &table)
{
    if (depth >= kTableDepthLimit || !lua_checkstack(L, 4)) {
        table.kind = Value::Kind::Other;
        table.text = "table";
        return;
    }
    const int absolute = lua_absindex(L, index);
    lua_pushnil(L);
    // A table stops being read past the limit, and the call that passes it is refused.
    bool more = true;
    while (recorded <= kRecordedLimit && (more = lua_next(L, absolute) != 0)) {
        Value key = valueAt(L, -2, depth + 1, recorded);
        Value value = valueAt(L, -1, depth + 1, recorded);
        table.entries.push_back({std::move(key), std::move(value)});
        lua_pop(L, 1);
    }
    if (more)
        lua_pop(L, 1); // the key that lua_next was not given again
    // A fixed order, whatever order Lua's hash part keeps the entries in.
    std::sort(table.entries.begin(), table.entries.end(), entryBefore);
}

// Reads without converting in place: lua_tolstring on a number would change a table key under lua_next.
Value valueAt(lua_State *L, int index, int depth, std::size_t &recorded)
{
    Value value;
    recorded += sizeof(Value);
    switch (lua_type(L, index)) {
    case LUA_TNIL:
        break;
    case LUA_TBOOLEAN:
        value.kind = Value::Kind::Boolean;
        value.number = lua_toboolean(L, index) ? 1 : 0;
        break;
    case LUA_TNUMBER:
        value.kind = Value::Kind::Number;
        value.number = static_cast<double>(lua_tonumber(L, index));
        break;
    case LUA_TSTRING: {
        std::size_t size = 0;
        const char *text = lua_tolstring(L, index, &size);
        value.kind = Value::Kind::Text;
        value.text.assign(text, size);
        recorded += size;
        break;
    }
    case LUA_TTABLE:
        value.kind = Value::Kind::Table;
        tableEntries(L, index, depth, recorded, value);
        break;
    case LUA_TLIGHTUSERDATA:
        if (lua_touserdata(L, index) == &weaponMarker) {
            value.kind = Value::Kind::Weapon;
            break;
        }
        [[fallthrough]];
    default:
        value.kind = Value::Kind::Other;
        value.text = lua_typename(L, lua_type(L, index));
        // A global name the script never set, such as a misspelt NewWeaponType: its recorder holds it.
        if (lua_tocfunction(L, index) == recorder && lua_getupvalue(L, index, 1)) {
            std::size_t size = 0;
            const char *name = lua_tolstring(L, -1, &size);
            value.text.assign(name, size);
            recorded += size;
            lua_pop(L, 1);
        }
        break;
    }
    return value;
}

// Returns false when the call cannot be recorded; the caller raises the Lua error after every C++
// object of the recording is gone.
bool recordCall(lua_State *L, Sandbox &sandbox) noexcept
{
    try {
        if (sandbox.calls.size() >= kCallLimit)
            return false;
        Call call;
        std::size_t nameSize = 0;
        const char *name = lua_tolstring(L, lua_upvalueindex(1), &nameSize);
        call.name.assign(name, nameSize);
        call.line = callLine(L);
        const int count = lua_gettop(L);
        call.arguments.reserve(static_cast<std::size_t>(count));
        for (int i = 1; i <= count; ++i)
            call.arguments.push_back(valueAt(L, i, 0, sandbox.recorded));
        sandbox.recorded += nameSize;
        if (sandbox.recorded > kRecordedLimit)
            return false;
        sandbox.calls.push_back(std::move(call));
        return true;
    } catch (...) {
        return false;
    }
}

int recorder(lua_State *L)
{
    Sandbox &sandbox = sandboxOf(L);
    if (!recordCall(L, sandbox)) {
        lua_pushfstring(L, "script:%d: makes too many calls or passes too much data", callLine(L));
        return lua_error(L);
    }
    return 0;
}

// __index of the global table: any name that the script has not set is a recorder for that name.
int globalName(lua_State *L)
{
    if (lua_type(L, 2) != LUA_TSTRING)
        return 0;
    lua_pushvalue(L, 2);
    lua_pushcclosure(L, recorder, 1);
    return 1;
}

// Lua's own messages read "script:12: unexpected symbol near '}'"; the line goes to its own field.
void splitMessage(std::string_view message, Run &run)
{
    constexpr std::string_view kChunk = "script:";
    if (message.starts_with(kChunk)) {
        const std::string_view rest = message.substr(kChunk.size());
        int line = 0;
        const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), line);
        if (error == std::errc() && end < rest.data() + rest.size() && *end == ':') {
            run.line = line;
            message = std::string_view(end + 1, static_cast<std::size_t>(rest.data() + rest.size() - end - 1));
            while (message.starts_with(' '))
                message.remove_prefix(1);
        }
    }
    run.reason = message;
}

int runChunk(lua_State *L)
{
    auto *bytes = static_cast<const std::string_view *>(lua_touserdata(L, 1));
    lua_pushglobaltable(L);
    lua_pushlightuserdata(L, &weaponMarker);
    lua_setfield(L, -2, "NewWeaponType");
    lua_createtable(L, 0, 1);
    lua_pushcfunction(L, globalName);
    lua_setfield(L, -2, "__index");
    lua_setmetatable(L, -2);
    lua_pop(L, 1);
    if (luaL_loadbufferx(L, bytes->data(), bytes->size(), "=script", "t") != LUA_OK)
        return lua_error(L);
    lua_sethook(L, countInstructions, LUA_MASKCOUNT, kHookEvery);
    lua_call(L, 0, 0);
    return 0;
}

} // namespace

const Value *Value::field(std::string_view key) const
{
    for (const auto &[k, v] : entries) {
        if (k.kind == Kind::Text && k.text == key)
            return &v;
    }
    return nullptr;
}

bool operator==(const Value &a, const Value &b)
{
    if (a.kind != b.kind)
        return false;
    switch (a.kind) {
    case Value::Kind::Number:
        return a.number == b.number || (std::isnan(a.number) && std::isnan(b.number));
    case Value::Kind::Boolean:
        return a.number == b.number;
    case Value::Kind::Text:
    case Value::Kind::Other:
        return a.text == b.text;
    case Value::Kind::Table:
        return std::equal(a.entries.begin(), a.entries.end(), b.entries.begin(), b.entries.end(),
                          [](const Value::Entry &x, const Value::Entry &y) { return x.key == y.key && x.value == y.value; });
    case Value::Kind::Nil:
    case Value::Kind::Weapon:
        break;
    }
    return true;
}

bool entryBefore(const Value::Entry &a, const Value::Entry &b)
{
    const bool aNumber = a.key.kind == Value::Kind::Number, bNumber = b.key.kind == Value::Kind::Number;
    if (aNumber != bNumber)
        return aNumber;
    if (aNumber)
        return a.key.number < b.key.number;
    if (a.key.kind != b.key.kind)
        return a.key.kind < b.key.kind;
    return a.key.text < b.key.text;
}

Run RunScript(std::string_view bytes)
{
    Sandbox sandbox;
    Run run;
    lua_State *L = lua_newstate(allocate, &sandbox);
    if (!L) {
        run.reason = "not enough memory to run the script";
        return run;
    }
    // Everything runs protected, state set-up included, so no error escapes as a panic.
    lua_pushcfunction(L, runChunk);
    lua_pushlightuserdata(L, &bytes);
    const int status = lua_pcall(L, 1, 0, 0);
    if (status == LUA_OK) {
        run.ok = true;
    } else if (status == LUA_ERRMEM) {
        run.line = sandbox.lastLine;
        run.reason = "uses too much memory (more than " + std::to_string(kMemoryLimit >> 20) + " MB)";
    } else {
        std::size_t size = 0;
        const char *message = lua_type(L, -1) == LUA_TSTRING ? lua_tolstring(L, -1, &size) : nullptr;
        splitMessage(message ? std::string_view(message, size) : std::string_view("fails"), run);
    }
    lua_close(L);
    run.calls = std::move(sandbox.calls);
    return run;
}

std::string valueText(const Value &value)
{
    switch (value.kind) {
    case Value::Kind::Nil:
        return "nil";
    case Value::Kind::Boolean:
        return value.number != 0 ? "true" : "false";
    case Value::Kind::Number:
        return NumberText::exactText(value.number);
    case Value::Kind::Text: {
        std::string text(1, '"');
        text.append(value.text).push_back('"');
        return text;
    }
    case Value::Kind::Weapon:
        return "NewWeaponType";
    case Value::Kind::Other:
        return value.text;
    case Value::Kind::Table: {
        std::string text = "{";
        for (const auto &[key, entry] : value.entries) {
            if (text.size() > 1)
                text += ", ";
            if (key.kind == Value::Kind::Text) {
                text += key.text;
            } else {
                text += '[';
                text += valueText(key);
                text += ']';
            }
            text += '=';
            text += valueText(entry);
        }
        return text + '}';
    }
    }
    return {};
}

} // namespace GameView
