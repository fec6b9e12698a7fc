// Where exceptions end: nothing throws out of the module, of an interface or of a function of the layer. What
// may throw inside runs in AtBorder, which names what a caller hears instead. Cleaning up after an exception
// isn't its business, but for what `onThrow` does as a function.
#pragma once

#include <new>
#include <type_traits>

// Returns what `work` returns. For an exception, what `onThrow` says: it is the answer itself, or a function
// that is called for it and told whether memory was lacking.
template <class OnThrow, class Work>
auto AtBorder(const OnThrow& onThrow, Work&& work) noexcept -> decltype(work()) {
    const auto answer = [&](bool noMemory) -> decltype(work()) {
        if constexpr (std::is_invocable_v<const OnThrow&, bool>) {
            return onThrow(noMemory);
        } else {
            return onThrow;
        }
    };
    try {
        return work();
    } catch (const std::bad_alloc&) {
        return answer(true);
    } catch (...) {
        return answer(false);
    }
}
