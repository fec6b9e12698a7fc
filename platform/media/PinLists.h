// The pins of a filter that may be anyone's, as its enumerator returns them.
#pragma once

#include <new>
#include <vector>

#include "platform/com/RefPtr.h"
#include "platform/media/FilterInterfaces.h"

// Throws std::bad_alloc: a pin that couldn't be listed isn't one that is missing.
inline std::vector<RefPtr<IPin>> PinsOf(IBaseFilter& filter) {
    std::vector<RefPtr<IPin>> pins;
    RefPtr<IEnumPins> enumerator;
    if (FAILED(filter.EnumPins(enumerator.Put()))) throw std::bad_alloc();
    RefPtr<IPin> pin;
    HRESULT result = S_OK;
    while ((result = enumerator->Next(1, pin.Put(), nullptr)) == S_OK) pins.push_back(pin);
    if (FAILED(result)) throw std::bad_alloc();
    return pins;
}

inline bool IsOf(IPin& pin, PIN_DIRECTION direction) {
    PIN_DIRECTION its = PINDIR_INPUT;
    return SUCCEEDED(pin.QueryDirection(&its)) && its == direction;
}

inline RefPtr<IPin> PeerOf(IPin& pin) {
    RefPtr<IPin> peer;
    return FAILED(pin.ConnectedTo(peer.Put())) ? RefPtr<IPin>() : peer;
}

inline RefPtr<IBaseFilter> OwnerOf(IPin& pin) {
    PIN_INFO info = {};
    return FAILED(pin.QueryPinInfo(&info)) ? RefPtr<IBaseFilter>() : RefPtr<IBaseFilter>::Adopt(info.pFilter);
}
