// What a sample says of its bytes: times and marks, as all samples of filters keep and tell them. Knows
// neither the bytes nor who holds them. One thread at a time.
#pragma once

#include "platform/media/MediaResults.h"
#include "platform/media/MediaTypes.h"

struct SampleProperties {
    DWORD flags = 0;  // AM_SAMPLE_PROPERTY_FLAGS
    REFERENCE_TIME start = 0;
    REFERENCE_TIME stop = 0;

    // For the questions and changes of single marks.
    HRESULT IsSet(DWORD flag) const { return (flags & flag) != 0 ? S_OK : S_FALSE; }
    HRESULT Mark(DWORD flag, BOOL on) {
        flags = on ? flags | flag : flags & ~flag;
        return S_OK;
    }

    // As far as they were set: without a stop it is the next unit after the start.
    HRESULT GetTime(REFERENCE_TIME* itsStart, REFERENCE_TIME* itsStop) const {
        if (!itsStart || !itsStop) return E_POINTER;
        if ((flags & (AM_SAMPLE_TIMEVALID | AM_SAMPLE_STOPVALID)) == 0) return VFW_E_SAMPLE_TIME_NOT_SET;
        *itsStart = start;
        const bool hasStop = (flags & AM_SAMPLE_STOPVALID) != 0;
        *itsStop = hasStop ? stop : start + 1;
        return hasStop ? S_OK : VFW_S_NO_STOP_TIME;
    }
    // Null takes a time back; a stop counts with a start alone.
    HRESULT SetTime(const REFERENCE_TIME* itsStart, const REFERENCE_TIME* itsStop) {
        Mark(AM_SAMPLE_TIMEVALID, itsStart != nullptr);
        Mark(AM_SAMPLE_STOPVALID, itsStart && itsStop);
        if (itsStart) start = *itsStart;
        if (itsStart && itsStop) stop = *itsStop;
        return S_OK;
    }
};
