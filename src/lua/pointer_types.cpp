// SPDX-License-Identifier: Apache-2.0
#include "lua/pointer_types.h"

#include <deque>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

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

CallbackParameter parameterFor(Kind kind) {
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

std::string mangledCallback(Operation const &operation) {
    std::string name = "_p_f_p_char_enum_korvo_core_status";
    for (Member const *result = operation.results; result->kind != Kind::none; ++result) {
        name += parameterFor(result->kind).mangled;
    }
    return name + "_p_void__void";
}

std::string spelledCallback(Operation const &operation) {
    std::string text = "void (*)(char *,enum korvo_core_status";
    for (Member const *result = operation.results; result->kind != Kind::none; ++result) {
        text += parameterFor(result->kind).spelled;
    }
    return text + ",void *)";
}

constexpr PointerType fixed_types[] = {
#define POINTER_TYPE(name, text) {#name, text},
#include "lua/pointer_types.def"
};
constexpr std::size_t fixed_count = std::size(fixed_types);
constexpr std::size_t operation_count = std::size(operations::all);

/// All types: the fixed ones, then those of callbacks in the order in which the rows first use them.
class Types {
  public:
    Types() : types_(std::begin(fixed_types), std::end(fixed_types)) {
        for (std::size_t place = 0; place < operation_count; ++place) {
            callback_places_[place] = addCallback(operations::all[place]);
        }
        version_callback_place_ = addCallback(operations::version_query);
        for (std::size_t place = 0; place < names_.size(); ++place) {
            types_.push_back({names_[place].c_str(), texts_[place].c_str()});
        }
    }

    PointerType const &type(PointerTypeId id) const { return types_[static_cast<std::size_t>(id)]; }

    PointerType const &callback(Operation const &operation) const {
        std::size_t const place = &operation == &operations::version_query
                                      ? version_callback_place_
                                      : callback_places_[&operation - operations::all];
        return types_[fixed_count + place];
    }

    PointerType const *begin() const { return types_.data(); }
    std::size_t count() const { return types_.size(); }

  private:
    std::size_t addCallback(Operation const &operation) {
        std::string const name = mangledCallback(operation);
        std::size_t place = 0;
        while (place < names_.size() && names_[place] != name) {
            ++place;
        }
        if (place == names_.size()) {
            names_.push_back(name);
            texts_.push_back(spelledCallback(operation));
        }
        texts_[place] +=
            std::string("|korvo_api_action_engine_") + operation.name + "_method_callback_func_ptr";
        return place;
    }

    std::vector<PointerType> types_;
    std::deque<std::string> names_;
    std::deque<std::string> texts_;
    std::size_t callback_places_[operation_count];
    std::size_t version_callback_place_;
};

/// Made when the module is first opened, and never destroyed: states may outlive everything else in the process.
Types &types() {
    static Types &the_types = *new Types;
    return the_types;
}

/// Pushes what the state's registry has under a key of this module's own.
void pushOwnEntry(lua_State *L) {
    lua_pushlightuserdata(L, const_cast<PointerType *>(types().begin()));
    lua_rawget(L, LUA_REGISTRYINDEX);
}

/// The state's link to the module's types, made when the state has none. It lives as long as the state.
PointerTypes &ownLink(lua_State *L) {
    pushOwnEntry(L);
    auto *link = static_cast<PointerTypes *>(lua_touserdata(L, -1));
    lua_pop(L, 1);
    if (link == nullptr) {
        lua_pushlightuserdata(L, const_cast<PointerType *>(types().begin()));
        link = static_cast<PointerTypes *>(lua_newuserdata(L, sizeof *link));
        *link = {types().begin(), types().count(), nullptr};
        lua_rawset(L, LUA_REGISTRYINDEX);
    }
    return *link;
}

bool has(PointerTypes const &module, PointerType const *type) {
    return std::less_equal<>()(module.types, type) && std::less<>()(type, module.types + module.count);
}

TypedPointer const *asTypedPointer(lua_State *L, int index) {
    bool const is_one = lua_type(L, index) == LUA_TUSERDATA && lua_objlen(L, index) == sizeof(TypedPointer);
    return is_one ? static_cast<TypedPointer const *>(lua_touserdata(L, index)) : nullptr;
}

/// What a type is a record of is only read when a module of ours made it: this one, nearly always, or another one that
/// the state has opened.
bool isKnown(lua_State *L, PointerType const *type) {
    PointerTypes const own = {types().begin(), types().count(), nullptr};
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

bool preparePointerTypes() noexcept {
    try {
        types();
        return true;
    } catch (...) {
        return false;
    }
}

PointerType const &pointerType(PointerTypeId id) {
    return types().type(id);
}

PointerType const &callbackType(Operation const &operation) {
    return types().callback(operation);
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
