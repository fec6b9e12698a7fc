// Where exceptions end: nothing throws out of the module, of an interface or of a function of the layer. What
// may throw inside runs in AtBorder, which names what a caller hears instead. Cleaning up after an exception
// isn't its business, but for what `onThrow` does as a function.
//
// A thread that its host cancels meanwhile isn't cut off inside: it ends after the call. Where a host's
// stream may block for as long as it likes, AtStreamBorder lets the end of the thread through.
#pragma once

#include <cxxabi.h>

#include <new>
#include <type_traits>

#include "platform/base/posix/CancellationOff.h"

// Returns what `work` returns. For an exception, what `onThrow` says: it is the answer itself, or a function
// that is called for it and told whether memory was lacking. When the thread is cancelled in the middle, that
// function is called too, for what it cleans up.
template <class OnThrow, class Work>
auto AtStreamBorder(const OnThrow& onThrow, Work&& work) -> decltype(work()) {
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
    } catch (const abi::__forced_unwind&) {
        static_cast<void>(answer(false));
        throw;
    } catch (...) {
        return answer(false);
    }
}

// The same, and the thread isn't cancelled before the end.
template <class OnThrow, class Work>
auto AtBorder(const OnThrow& onThrow, Work&& work) noexcept -> decltype(work()) {
    const CancellationOff off;
    return AtStreamBorder(onThrow, work);
}
