// SPDX-License-Identifier: Apache-2.0
#include "lua/pointer_types.h"

#include <array>
#include <functional>
#include <iterator>

#include "operations/operations.h"

namespace korvo::lua {
namespace {

using operations::Kind;
using operations::Member;
using operations::Operation;

/// How a callback takes a result: in the mangled name of its type, and in its spelling.
struct CallbackParameter {
    char const *mangled;
    char const *spelled;
};

constexpr CallbackParameter parameterFor(Kind kind) {
    switch (kind) {
        case Kind::number:
            return {"_unsigned_int", ",unsigned int"};
        case Kind::flag:
            return {"_unsigned_char", ",unsigned char"};
        case Kind::text:
            return {"_p_char", ",char *"};
        case Kind::texts:
            return {"_p_p_char", ",char **"};
        case Kind::numbers:
            return {"_p_p_unsigned_int", ",unsigned int **"};
        case Kind::none:
            break;
    }
    return {"", ""};
}

/// Texts that are put together by the compiler. Without a place to write to they are only measured.
class Writer {
  public:
    constexpr explicit Writer(char *place) : place_(place) {}

    constexpr void write(char const *text) {
        for (; *text != '\0'; ++text) {
            put(*text);
        }
    }

    constexpr void end() { put('\0'); }

    constexpr std::size_t written() const { return written_; }

  private:
    constexpr void put(char character) {
        if (place_ != nullptr) {
            place_[written_] = character;
        }
        ++written_;
    }

    char *place_;
    std::size_t written_ = 0;
};

constexpr std::size_t operation_count = std::size(operations::all);

/// The operations, and the version query behind them.
constexpr Operation const &operationAt(std::size_t place) {
    return place < operation_count ? operations::all[place] : operations::version_query;
}

constexpr bool haveSameResults(Operation const &left, Operation const &right) {
    Member const *other = right.results;
    for (Member const *result = left.results; result->kind != Kind::none; ++result, ++other) {
        if (result->kind != other->kind) {
            return false;
        }
    }
    return other->kind == Kind::none;
}

/// Operations with results of the same kinds have one type of callback: that of the first of them.
constexpr std::size_t firstOfType(std::size_t place) {
    std::size_t first = 0;
    while (!haveSameResults(operationAt(first), operationAt(place))) {
        ++first;
    }
    return first;
}

/// The types of callbacks, in the order in which the rows first use them.
struct CallbackPlaces {
    std::size_t count;
    unsigned char of_operation[operation_count + 1];
};

constexpr CallbackPlaces placeCallbacks() {
    CallbackPlaces places = {};
    for (std::size_t place = 0; place <= operation_count; ++place) {
        std::size_t const first = firstOfType(place);
        places.of_operation[place] =
            first == place ? static_cast<unsigned char>(places.count++) : places.of_operation[first];
    }
    return places;
}

constexpr CallbackPlaces callback_places = placeCallbacks();

constexpr void writeMangledCallback(Writer &writer, Operation const &operation) {
    writer.write("_p_f_p_char_enum_korvo_core_status");
    for (Member const *result = operation.results; result->kind != Kind::none; ++result) {
        writer.write(parameterFor(result->kind).mangled);
    }
    writer.write("_p_void__void");
    writer.end();
}

/// All spellings: the function type, and the typedef of each operation that has it.
constexpr void writeSpelledCallback(Writer &writer, std::size_t first) {
    writer.write("void (*)(char *,enum korvo_core_status");
    for (Member const *result = operationAt(first).results; result->kind != Kind::none; ++result) {
        writer.write(parameterFor(result->kind).spelled);
    }
    writer.write(",void *)");
    for (std::size_t place = first; place <= operation_count; ++place) {
        if (callback_places.of_operation[place] == callback_places.of_operation[first]) {
            writer.write("|korvo_api_action_engine_");
            writer.write(operationAt(place).name);
            writer.write("_method_callback_func_ptr");
        }
    }
    writer.end();
}

/// Where the texts of a type begin among all texts.
struct TextPlaces {
    std::size_t name;
    std::size_t text;
};

template <std::size_t size>
struct CallbackTexts {
    char texts[size];
    TextPlaces places[callback_places.count];
};

template <std::size_t size>
constexpr std::size_t writeCallbacks(CallbackTexts<size> *callbacks) {
    Writer writer(callbacks != nullptr ? callbacks->texts : nullptr);
    for (std::size_t place = 0; place <= operation_count; ++place) {
        if (firstOfType(place) != place) {
            continue;
        }
        std::size_t const name = writer.written();
        writeMangledCallback(writer, operationAt(place));
        std::size_t const text = writer.written();
        writeSpelledCallback(writer, place);
        if (callbacks != nullptr) {
            callbacks->places[callback_places.of_operation[place]] = {name, text};
        }
    }
    return writer.written();
}

constexpr std::size_t size_of_texts = writeCallbacks<1>(nullptr);

constexpr CallbackTexts<size_of_texts> makeCallbackTexts() {
    CallbackTexts<size_of_texts> callbacks = {};
    writeCallbacks(&callbacks);
    return callbacks;
}

constexpr CallbackTexts<size_of_texts> callback_texts = makeCallbackTexts();

constexpr PointerType fixed_types[] = {
#define POINTER_TYPE(name, text) {#name, text},
#include "lua/pointer_types.def"
};
constexpr std::size_t fixed_count = std::size(fixed_types);
constexpr std::size_t type_count = fixed_count + callback_places.count;

/// The fixed types, and then those of callbacks.
constexpr std::array<PointerType, type_count> makeTypes() {
    std::array<PointerType, type_count> made = {};
    for (std::size_t place = 0; place < fixed_count; ++place) {
        made[place] = fixed_types[place];
    }
    for (std::size_t place = 0; place < callback_places.count; ++place) {
        TextPlaces const texts = callback_texts.places[place];
        made[fixed_count + place] = {callback_texts.texts + texts.name, callback_texts.texts + texts.text};
    }
    return made;
}

constexpr std::array<PointerType, type_count> types = makeTypes();

/// Pushes what the state's registry has under a key of this module's own.
void pushOwnEntry(lua_State *L) {
    lua_pushlightuserdata(L, const_cast<PointerType *>(types.data()));
    lua_rawget(L, LUA_REGISTRYINDEX);
}

/// The state's link to the module's types, made when the state has none. It lives as long as the state.
PointerTypes &ownLink(lua_State *L) {
    pushOwnEntry(L);
    auto *link = static_cast<PointerTypes *>(lua_touserdata(L, -1));
    lua_pop(L, 1);
    if (link == nullptr) {
        lua_pushlightuserdata(L, const_cast<PointerType *>(types.data()));
        link = static_cast<PointerTypes *>(lua_newuserdata(L, sizeof *link));
        *link = {types.data(), types.size(), nullptr};
        lua_rawset(L, LUA_REGISTRYINDEX);
    }
    return *link;
}

bool has(PointerTypes const &module, PointerType const *type) {
    return std::less_equal<>()(module.types, type) && std::less<>()(type, module.types + module.count);
}

/// Only a full userdata has a size; that of a light one is 0.
TypedPointer const *asTypedPointer(lua_State *L, int index) {
    void const *const userdata = lua_touserdata(L, index);
    bool const is_one = userdata != nullptr && lua_objlen(L, index) == sizeof(TypedPointer);
    return is_one ? static_cast<TypedPointer const *>(userdata) : nullptr;
}

/// What a type is a record of is only read when a module of ours made it: this one, nearly always, or another one that
/// the state has opened.
bool isKnown(lua_State *L, PointerType const *type) {
    PointerTypes const own = {types.data(), types.size(), nullptr};
    if (has(own, type)) {
        return true;
    }
    pushOwnEntry(L);
    auto const *const ring = static_cast<PointerTypes const *>(lua_touserdata(L, -1));
    lua_pop(L, 1);
    PointerTypes const *module = ring;
    while (module != nullptr && !has(*module, type)) {
        module = module->next != ring ? module->next : nullptr;
    }
    return module != nullptr;
}

}  // namespace

PointerType const &pointerType(PointerTypeId id) {
    return types[static_cast<std::size_t>(id)];
}

PointerType const &callbackType(Operation const &operation) {
    std::size_t const place = &operation == &operations::version_query
                                  ? operation_count
                                  : static_cast<std::size_t>(&operation - operations::all);
    return types[fixed_count + callback_places.of_operation[place]];
}

void joinPointerTypes(lua_State *L) {
    PointerTypes &link = ownLink(L);
    if (link.next != nullptr) {
        return;
    }
    lua_getfield(L, LUA_REGISTRYINDEX, pointer_types_key);
    auto *const ring = static_cast<PointerTypes *>(lua_touserdata(L, -1));
    lua_pop(L, 1);
    if (ring != nullptr) {
        link.next = ring->next;
        ring->next = &link;
        return;
    }

    // What strangers have put under this key is neither read nor replaced.
    constexpr char const *shared_key = "swig_runtime_data_type_pointer4";
    lua_getfield(L, LUA_REGISTRYINDEX, shared_key);
    bool const taken = !lua_isnil(L, -1);
    lua_pop(L, 1);
    if (!taken) {
        lua_pushlightuserdata(L, &link);
        lua_setfield(L, LUA_REGISTRYINDEX, shared_key);
    }
    lua_pushlightuserdata(L, &link);
    lua_setfield(L, LUA_REGISTRYINDEX, pointer_types_key);
    link.next = &link;
}

PointerType const *typeOfUserdata(lua_State *L, int index) {
    TypedPointer const *const typed = asTypedPointer(L, index);
    return typed != nullptr && isKnown(L, typed->type) ? typed->type : nullptr;
}

void *pointerOfUserdata(lua_State *L, int index) {
    TypedPointer const *const typed = asTypedPointer(L, index);
    bool const is_ours = typed != nullptr && isKnown(L, typed->type);
    return is_ours ? typed->pointer : lua_touserdata(L, index);
}

char const *typeText(lua_State *L, int index) {
    if (!lua_isuserdata(L, index)) {
        return luaL_typename(L, index);
    }
    PointerType const *const type = typeOfUserdata(L, index);
    return type != nullptr ? type->text : "userdata (unknown type)";
}

}  // namespace korvo::lua
