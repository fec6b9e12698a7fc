// How the owner of a graph gets decoded audio out of the stream reader filter at its end. The order of the
// operations is the binary border between the filter's module and those who load it.
#pragma once

#include "platform/base/Types.h"
#include "platform/com/OwnClasses.h"
#include "platform/com/Unknown.h"

struct IStreamReaderControl : IUnknown {
    // Once, after the connection of the filter and in front of the rest. E_FAIL without a connection.
    virtual HRESULT Initialize() = 0;
    // The format of what ReadAudio returns. Writes nothing where there is no connection.
    virtual HRESULT GetAudioFormat(uint32_t* channels /*out*/, uint32_t* sampleRate /*out: Hz*/,
                                   uint32_t* bitsPerSample /*out*/) = 0;
    // Waits until `size` bytes are there or the stream has ended; at its end fewer come, with the flag set.
    // Where it broke off, fewer come without the flag, and then the failure, a negative result, for every
    // read until a seek. Bytes of a running graph only: fails in a stopped one and after Shutdown.
    virtual HRESULT ReadAudio(void* buffer /*out*/, uint32_t size /*in: bytes*/,
                              uint32_t* done /*out: bytes*/, uint8_t* endOfStream /*out: may be null*/) = 0;
    // Ends all reading, also one that waits on another thread.
    virtual HRESULT Shutdown() = 0;

protected:
    ~IStreamReaderControl() = default;
};

inline constexpr GUID IID_IStreamReaderControl = MakeGuid("467B9998-8251-429F-B655-53D47B3917EA");
