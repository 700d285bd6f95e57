// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_FRAME_FUNCTION_REF_H
#define KORVO_FRAME_FUNCTION_REF_H

#include <memory>
#include <type_traits>

template <typename Signature>
class FunctionRef;

/// Refers to a callable for the time of a call, so that a function taking it is compiled once for all callables.
template <typename Return, typename... Arguments>
class FunctionRef<Return(Arguments...)> {
  public:
    template <typename Callable,
              typename = std::enable_if_t<!std::is_same_v<std::decay_t<Callable>, FunctionRef>>>
    FunctionRef(Callable &&callable)
        : callable_(const_cast<void *>(static_cast<void const *>(std::addressof(callable)))),
          call_([](void *object, Arguments... arguments) -> Return {
              return (*static_cast<std::remove_reference_t<Callable> *>(object))(arguments...);
          }) {}

    Return operator()(Arguments... arguments) const { return call_(callable_, arguments...); }

  private:
    void *callable_;
    Return (*call_)(void *, Arguments...);
};

#endif
