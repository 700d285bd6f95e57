// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_JSON_JSON_H
#define KORVO_JSON_JSON_H

// The JSON value model. Every command, response and event is a json::Object.
//
// There are two ways to read a member, and the choice decides how a reader fails:
//
//   inserting   object[name].ConvertTo<T>()          never fails: what is absent or of another type becomes T()
//   read-only   const object[name].CastTo<T>()       throws: "Object member not found: NAME" or "Bad cast"
//
// Values are copied deeply. A reference to a member's element stays valid while other members are added.
// No function locks: an object may be read by several threads, and changed by one that has it alone.

#include <algorithm>
#include <cstddef>
#include <deque>
#include <list>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace json {

class Object;
class Array;
class UnknownElement;

/// The only exception that the model throws by itself; what() is one of the three texts told at the functions.
class Exception : public std::runtime_error {
  public:
    explicit Exception(std::string const &message) : std::runtime_error(message) {}
};

/// A scalar: one text, one number or one flag.
template <typename Value>
class TrivialType_T {
  public:
    TrivialType_T() : value_() {}
    TrivialType_T(Value value) : value_(std::move(value)) {}

    Value const &value() const { return value_; }
    Value &value() { return value_; }

  private:
    Value value_;
};

/// A text. Unlike the other scalars it is also made from a C text, which must not be NULL.
using String = TrivialType_T<std::string>;
using Number = TrivialType_T<double>;
using Boolean = TrivialType_T<bool>;

class Null {};

/// Called with the value that an element holds; the value may be read.
class ConstVisitor {
  public:
    virtual ~ConstVisitor() = default;
    virtual void Visit(Object const &object) = 0;
    virtual void Visit(Array const &array) = 0;
    virtual void Visit(String const &text) = 0;
    virtual void Visit(Number const &number) = 0;
    virtual void Visit(Boolean const &flag) = 0;
    virtual void Visit(Null const &null) = 0;
};

/// Called with the value that an element holds; the value may be changed, its type may not.
class Visitor {
  public:
    virtual ~Visitor() = default;
    virtual void Visit(Object &object) = 0;
    virtual void Visit(Array &array) = 0;
    virtual void Visit(String &text) = 0;
    virtual void Visit(Number &number) = 0;
    virtual void Visit(Boolean &flag) = 0;
    virtual void Visit(Null &null) = 0;
};

template <typename T>
struct IsValueType : std::false_type {};
template <>
struct IsValueType<Object> : std::true_type {};
template <>
struct IsValueType<Array> : std::true_type {};
template <>
struct IsValueType<String> : std::true_type {};
template <>
struct IsValueType<Number> : std::true_type {};
template <>
struct IsValueType<Boolean> : std::true_type {};
template <>
struct IsValueType<Null> : std::true_type {};

/// Holds exactly one value of one of the six types; json::Null until something else is assigned.
class UnknownElement {
  public:
    class Imp;
    template <typename T>
    class Imp_T;

    UnknownElement();
    UnknownElement(UnknownElement const &other);

    /// Wraps a copy of a value of one of the six types; a temporary is moved in.
    template <typename T, typename = std::enable_if_t<IsValueType<std::decay_t<T>>::value>>
    UnknownElement(T &&value);

    /// Takes over a value that somebody has made in memory of his own; it is deleted through its virtual destructor.
    template <typename Made, typename = std::enable_if_t<std::is_base_of<Imp, Made>::value>>
    explicit UnknownElement(Made *value) noexcept : imp_(value) {}

    ~UnknownElement();

    /// Copies first and releases the old value afterwards, so an element may be assigned a part of itself.
    UnknownElement &operator=(UnknownElement const &other);
    /// Takes the value over and leaves json::Null behind; the other element may be a part of this one.
    UnknownElement &operator=(UnknownElement &&other);

    /// The held value. Throws "Bad cast" when the element holds another type.
    /// See ConvertTo() for the access that never fails.
    template <typename T>
    T const &CastTo() const;

    /// The held value. When the element holds another type, json::Null included, its value is first replaced by
    /// T(). Fails only when memory runs out. See CastTo() for the access that refuses another type.
    template <typename T>
    T &ConvertTo();

    void Accept(ConstVisitor &visitor) const;
    void Accept(Visitor &visitor);

    friend bool operator==(UnknownElement const &left, UnknownElement const &right);

  private:
    /// Deletes the held value and holds this one.
    void Replace(Imp *value);

    Imp *imp_;
};

/// An ordered sequence of elements.
class Array {
  public:
    using Elements = std::deque<UnknownElement>;
    using iterator = Elements::iterator;
    using const_iterator = Elements::const_iterator;

    /// Appends a copy of the element and returns its place.
    iterator Insert(UnknownElement const &element);

    /// Appends an element made in place and returns it: from a value of one of the six types, or from one that
    /// UnknownElement takes over, which remains the caller's when this throws.
    template <typename T>
    UnknownElement &Emplace(T &&value);

    iterator begin() { return elements_.begin(); }
    iterator end() { return elements_.end(); }
    const_iterator begin() const { return elements_.begin(); }
    const_iterator end() const { return elements_.end(); }
    std::size_t size() const { return elements_.size(); }
    bool empty() const { return elements_.empty(); }

  private:
    Elements elements_;
};

/// Members in the order in which they were inserted, which is the order in which they are sent. Names are
/// compared byte for byte; a look-up walks from the first member, so its cost grows with the number of members.
class Object {
  public:
    struct Member {
        Member(std::string member_name, UnknownElement const &member_element)
            : name(std::move(member_name)), element(member_element) {}

        template <typename T,
                  typename = std::enable_if_t<!std::is_same<std::decay_t<T>, UnknownElement>::value>>
        Member(std::string member_name, T &&value)
            : name(std::move(member_name)), element(std::forward<T>(value)) {}

        std::string name;
        UnknownElement element;
    };

    // A list, since callers keep references to elements while members are added.
    using Members = std::list<Member>;
    using iterator = Members::iterator;
    using const_iterator = Members::const_iterator;

    /// The element of the first member of that name; throws "Object member not found: NAME" when there is none.
    UnknownElement const &operator[](std::string_view name) const;

    /// The element of the first member of that name; when there is none, a member holding json::Null is appended.
    UnknownElement &operator[](std::string_view name);

    /// Appends a copy of the member and returns its place; throws "Object member already exists: NAME".
    iterator Insert(Member const &member);

    /// Appends a member made in place, from what Array::Emplace() takes, and returns its element; throws "Object
    /// member already exists: NAME".
    template <typename T>
    UnknownElement &Emplace(std::string name, T &&value);

    /// The first member of that name, or end().
    iterator Find(std::string_view name);
    const_iterator Find(std::string_view name) const;

    iterator begin() { return members_.begin(); }
    iterator end() { return members_.end(); }
    const_iterator begin() const { return members_.begin(); }
    const_iterator end() const { return members_.end(); }
    std::size_t size() const { return members_.size(); }
    bool empty() const { return members_.empty(); }

  private:
    void RefuseDuplicate(std::string_view name) const;

    Members members_;
};

/// The heap block behind an element.
class UnknownElement::Imp {
  public:
    virtual ~Imp() = default;
    virtual Imp *Clone() const = 0;
    virtual bool Compare(Imp const &other) const = 0;
    virtual void Accept(ConstVisitor &visitor) const = 0;
    virtual void Accept(Visitor &visitor) = 0;
};

namespace detail {

/// Remembers the address of the visited value when it is a T. The type is found by virtual calls and not by
/// run-time type information, which need not be shared between the libraries that exchange elements.
template <typename T, typename Base, template <typename> class Qualified>
class Finder : public Base {
  public:
    typename Qualified<T>::type *found = nullptr;

    void Visit(typename Qualified<Object>::type &value) override { Remember(value); }
    void Visit(typename Qualified<Array>::type &value) override { Remember(value); }
    void Visit(typename Qualified<String>::type &value) override { Remember(value); }
    void Visit(typename Qualified<Number>::type &value) override { Remember(value); }
    void Visit(typename Qualified<Boolean>::type &value) override { Remember(value); }
    void Visit(typename Qualified<Null>::type &value) override { Remember(value); }

  private:
    void Remember(typename Qualified<T>::type &value) { found = &value; }
    template <typename Other>
    void Remember(Other &) {}
};

template <typename T>
struct Mutable {
    using type = T;
};

template <typename T>
using ConstFinder = Finder<T, ConstVisitor, std::add_const>;
template <typename T>
using MutableFinder = Finder<T, Visitor, Mutable>;

}  // namespace detail

template <typename Value>
bool operator==(TrivialType_T<Value> const &left, TrivialType_T<Value> const &right) {
    return left.value() == right.value();
}

inline bool operator==(Null const &, Null const &) {
    return true;
}

inline bool operator==(Array const &left, Array const &right);
inline bool operator==(Object::Member const &left, Object::Member const &right);
inline bool operator==(Object const &left, Object const &right);

template <typename T>
class UnknownElement::Imp_T : public UnknownElement::Imp {
  public:
    Imp_T() : value_() {}
    template <typename Value>
    explicit Imp_T(Value &&value) : value_(std::forward<Value>(value)) {}

    Imp *Clone() const override { return new Imp_T(value_); }  // GCOV_EXCL_BR_LINE: undone without memory

    bool Compare(Imp const &other) const override {
        detail::ConstFinder<T> finder;
        other.Accept(finder);
        return finder.found != nullptr && value_ == *finder.found;
    }

    void Accept(ConstVisitor &visitor) const override { visitor.Visit(value_); }
    void Accept(Visitor &visitor) override { visitor.Visit(value_); }

  private:
    T value_;
};

inline UnknownElement::UnknownElement() : imp_(new Imp_T<Null>(Null())) {}

inline UnknownElement::UnknownElement(UnknownElement const &other) : imp_(other.imp_->Clone()) {}

template <typename T, typename>
UnknownElement::UnknownElement(T &&value) : imp_(new Imp_T<std::decay_t<T>>(std::forward<T>(value))) {}

inline UnknownElement::~UnknownElement() {
    delete imp_;  // GCOV_EXCL_BR_LINE: it is never NULL
}

inline void UnknownElement::Replace(Imp *value) {
    delete imp_;  // GCOV_EXCL_BR_LINE: it is never NULL
    imp_ = value;
}

inline UnknownElement &UnknownElement::operator=(UnknownElement const &other) {
    if (this != &other) {
        Replace(other.imp_->Clone());
    }
    return *this;
}

inline UnknownElement &UnknownElement::operator=(UnknownElement &&other) {
    // Exchanging with a value of its own leaves no empty state for anybody to meet. The two elements are never
    // exchanged with each other: one may hold the other and would then hold itself.
    UnknownElement taken;
    std::swap(taken.imp_, other.imp_);
    std::swap(imp_, taken.imp_);
    return *this;
}

template <typename T>
T const &UnknownElement::CastTo() const {
    detail::ConstFinder<T> finder;
    Accept(finder);
    if (finder.found == nullptr) {
        throw Exception("Bad cast");
    }
    return *finder.found;
}

template <typename T>
T &UnknownElement::ConvertTo() {
    detail::MutableFinder<T> finder;
    Accept(finder);
    if (finder.found == nullptr) {
        Replace(new Imp_T<T>());  // GCOV_EXCL_BR_LINE: undone without memory
        Accept(finder);
    }
    return *finder.found;
}

inline void UnknownElement::Accept(ConstVisitor &visitor) const {
    static_cast<Imp const *>(imp_)->Accept(visitor);
}

inline void UnknownElement::Accept(Visitor &visitor) {
    imp_->Accept(visitor);
}

inline bool operator==(UnknownElement const &left, UnknownElement const &right) {
    return left.imp_->Compare(*right.imp_);
}

inline Array::iterator Array::Insert(UnknownElement const &element) {
    return elements_.insert(elements_.end(), element);
}

template <typename T>
UnknownElement &Array::Emplace(T &&value) {
    return elements_.emplace_back(std::forward<T>(value));
}

inline UnknownElement const &Object::operator[](std::string_view name) const {
    const_iterator const member = Find(name);
    if (member == end()) {
        throw Exception("Object member not found: " + std::string(name));
    }
    return member->element;
}

inline UnknownElement &Object::operator[](std::string_view name) {
    iterator const member = Find(name);
    return member != end() ? member->element : members_.emplace_back(std::string(name), Null()).element;
}

inline Object::iterator Object::Insert(Member const &member) {
    RefuseDuplicate(member.name);
    return members_.insert(members_.end(), member);
}

template <typename T>
UnknownElement &Object::Emplace(std::string name, T &&value) {
    RefuseDuplicate(name);
    return members_.emplace_back(std::move(name), std::forward<T>(value)).element;
}

inline Object::iterator Object::Find(std::string_view name) {
    iterator member = begin();
    while (member != end() && member->name != name) {
        ++member;
    }
    return member;
}

inline Object::const_iterator Object::Find(std::string_view name) const {
    return const_cast<Object *>(this)->Find(name);
}

inline void Object::RefuseDuplicate(std::string_view name) const {
    if (Find(name) != end()) {
        throw Exception("Object member already exists: " + std::string(name));
    }
}

inline bool operator==(Array const &left, Array const &right) {
    return left.size() == right.size() && std::equal(left.begin(), left.end(), right.begin());
}

inline bool operator==(Object::Member const &left, Object::Member const &right) {
    return left.name == right.name && left.element == right.element;
}

/// Members are compared in order: objects with the same members in another order are not equal.
inline bool operator==(Object const &left, Object const &right) {
    return left.size() == right.size() && std::equal(left.begin(), left.end(), right.begin());
}

inline bool operator!=(UnknownElement const &left, UnknownElement const &right) {
    return !(left == right);
}

template <typename T, typename = std::enable_if_t<IsValueType<T>::value>>
bool operator!=(T const &left, T const &right) {
    return !(left == right);
}

inline bool operator!=(Object::Member const &left, Object::Member const &right) {
    return !(left == right);
}

}  // namespace json

#endif
