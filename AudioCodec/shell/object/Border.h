// The module's own border: AtBorder, and CreateObject, by which objects come to the host.
#pragma once

#include <utility>

#include "AudioCodec/shell/object/ResultCodes.h"
#include "platform/base/Border.h"
#include "platform/com/RefPtr.h"

// The one shape of the factories: makes a new `Object` with one reference, or returns RESULT_BAD_ARGUMENT for
// a null receiver, RESULT_NO_MEMORY if it can't be had. An exception of type `unsigned long` is itself the
// result. The receiver is written by a success alone.
template <class Object, class Interface, class... Arguments>
Result CreateObject(Interface** receiver, Arguments&&... arguments) noexcept {
    if (!receiver) return RESULT_BAD_ARGUMENT;
    const CancellationOff off;
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
