// A reference to something callable, for a parameter that is called before the function returns. Unlike
// std::function it never allocates.
#pragma once

#include <memory>
#include <type_traits>
#include <utility>

namespace talx {

template <class Signature>
class FunctionRef;

template <class Result, class... Args>
class FunctionRef<Result(Args...)> {
public:
    template <class Callable>
    requires(!std::is_same_v<std::remove_cvref_t<Callable>, FunctionRef>)
        FunctionRef(Callable&& callable) // NOLINT(*-explicit-*): a lambda is handed over as it is
        : object_(const_cast<void*>(static_cast<const void*>(std::addressof(callable)))),
          call_([](void* object, Args... args) -> Result {
              return (*static_cast<std::remove_reference_t<Callable>*>(object))(std::forward<Args>(args)...);
          }) {}

    Result operator()(Args... args) const { return call_(object_, std::forward<Args>(args)...); }

private:
    void* object_;
    Result (*call_)(void* object, Args... args);
};

} // namespace talx
