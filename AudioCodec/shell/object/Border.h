// Where exceptions end. Nothing throws across the binary border: what can throw behind it runs in AtBorder,
// and objects come to the host through CreateObject.
#pragma once

#include <utility>

#include "AudioCodec/shell/object/ResultCodes.h"
#include "platform/com/RefPtr.h"

// Gives what `work` gives, or `onThrow` for any exception.
template <class Work>
auto AtBorder(decltype(std::declval<Work&>()()) onThrow, Work&& work) noexcept -> decltype(work()) {
    try {
        return work();
    } catch (...) {
        return onThrow;
    }
}

// The one shape of the factories: gives a new `Object` with one reference, or 4 for a null receiver, 2 if it
// can't be had. An exception of type `unsigned long` is itself the result. The receiver is written by a
// success alone.
template <class Object, class Interface, class... Arguments>
Result CreateObject(Interface** receiver, Arguments&&... arguments) noexcept {
    if (!receiver) return RESULT_BAD_ARGUMENT;
    try {
        auto object = RefPtr<Object>::Retain(new Object(std::forward<Arguments>(arguments)...));
        *receiver = object.Detach();
        return RESULT_OK;
    } catch (unsigned long result) {
        return static_cast<Result>(result);
    } catch (...) {
        return RESULT_NO_MEMORY;
    }
}
