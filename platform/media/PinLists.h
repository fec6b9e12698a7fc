// The pins of a filter that may be anyone's, as its enumerator returns them.
#pragma once

#include <vector>

#include "platform/com/RefPtr.h"
#include "platform/media/FilterInterfaces.h"

inline std::vector<RefPtr<IPin>> PinsOf(IBaseFilter& filter) {
    std::vector<RefPtr<IPin>> pins;
    RefPtr<IEnumPins> enumerator;
    if (FAILED(filter.EnumPins(enumerator.Put()))) return pins;
    RefPtr<IPin> pin;
    while (enumerator->Next(1, pin.Put(), nullptr) == S_OK) pins.push_back(pin);
    return pins;
}

inline std::vector<RefPtr<IPin>> PinsOf(IBaseFilter& filter, PIN_DIRECTION direction) {
    std::vector<RefPtr<IPin>> pins = PinsOf(filter);
    std::erase_if(pins, [&](const RefPtr<IPin>& pin) {
        PIN_DIRECTION its = PINDIR_INPUT;
        return FAILED(pin->QueryDirection(&its)) || its != direction;
    });
    return pins;
}

inline RefPtr<IPin> PeerOf(IPin& pin) {
    RefPtr<IPin> peer;
    return FAILED(pin.ConnectedTo(peer.Put())) ? RefPtr<IPin>() : peer;
}

inline RefPtr<IBaseFilter> OwnerOf(IPin& pin) {
    PIN_INFO info = {};
    return FAILED(pin.QueryPinInfo(&info)) ? RefPtr<IBaseFilter>() : RefPtr<IBaseFilter>::Adopt(info.pFilter);
}
