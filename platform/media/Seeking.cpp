#include "platform/media/Seeking.h"

namespace {

constexpr DWORD kCapabilities = AM_SEEKING_CanSeekAbsolute | AM_SEEKING_CanSeekForwards |
                                AM_SEEKING_CanSeekBackwards | AM_SEEKING_CanGetCurrentPos |
                                AM_SEEKING_CanGetDuration;

template <class T>
HRESULT Give(T value, T* place) {
    if (!place) return E_POINTER;
    *place = value;
    return S_OK;
}

}  // namespace

HRESULT SeekingOrigin::GetCapabilities(DWORD* capabilities) { return Give(kCapabilities, capabilities); }

HRESULT SeekingOrigin::CheckCapabilities(DWORD* capabilities) {
    if (!capabilities) return E_POINTER;
    // In and out: what is asked for, and what of it there is. S_FALSE tells of a part.
    const DWORD asked = *capabilities;
    *capabilities &= kCapabilities;
    return *capabilities == asked ? S_OK : *capabilities ? S_FALSE : E_FAIL;
}

HRESULT SeekingOrigin::IsFormatSupported(const GUID* format) {
    if (!format) return E_POINTER;
    return *format == TIME_FORMAT_MEDIA_TIME ? S_OK : S_FALSE;
}

HRESULT SeekingOrigin::QueryPreferredFormat(GUID* format) { return Give(TIME_FORMAT_MEDIA_TIME, format); }

HRESULT SeekingOrigin::GetTimeFormat(GUID* format) { return Give(TIME_FORMAT_MEDIA_TIME, format); }

HRESULT SeekingOrigin::IsUsingTimeFormat(const GUID* format) { return IsFormatSupported(format); }

HRESULT SeekingOrigin::SetTimeFormat(const GUID* format) {
    const HRESULT result = IsFormatSupported(format);
    return result == S_FALSE ? E_INVALIDARG : result;
}

HRESULT SeekingOrigin::GetDuration(LONGLONG* duration) { return duration ? Duration(*duration) : E_POINTER; }

// Nothing stops a stream before its end.
HRESULT SeekingOrigin::GetStopPosition(LONGLONG* stop) { return GetDuration(stop); }

HRESULT SeekingOrigin::GetCurrentPosition(LONGLONG* current) { return Give(StartPosition(), current); }

HRESULT SeekingOrigin::ConvertTimeFormat(LONGLONG* target, const GUID* targetFormat, LONGLONG source,
                                         const GUID* sourceFormat) {
    // Null stands for the format that is set, and there is only one.
    for (const GUID* format : {targetFormat, sourceFormat}) {
        if (format && !(*format == TIME_FORMAT_MEDIA_TIME)) return E_INVALIDARG;
    }
    return Give(source, target);
}

HRESULT SeekingOrigin::SetPositions(LONGLONG* current, DWORD currentFlags, LONGLONG*, DWORD stopFlags) {
    // Refused aloud, and before anything moves: a caller who asks for a stop would wait for it.
    if ((stopFlags & AM_SEEKING_PositioningBitsMask) != AM_SEEKING_NoPositioning) return E_NOTIMPL;
    if (currentFlags == AM_SEEKING_NoPositioning) return S_OK;
    if (!current) return E_POINTER;
    // Compared as a whole: the further bits ask for things that this stream doesn't do.
    if (currentFlags != AM_SEEKING_AbsolutePositioning) return E_NOTIMPL;
    return *current < 0 ? E_INVALIDARG : SeekTo(*current);
}

HRESULT SeekingOrigin::GetPositions(LONGLONG* current, LONGLONG* stop) {
    if (current) *current = StartPosition();
    return stop ? GetDuration(stop) : S_OK;
}

HRESULT SeekingOrigin::GetAvailable(LONGLONG* earliest, LONGLONG* latest) {
    if (earliest) *earliest = 0;
    return latest ? GetDuration(latest) : S_OK;
}

HRESULT SeekingOrigin::SetRate(double rate) { return rate == 1.0 ? S_OK : E_NOTIMPL; }

HRESULT SeekingOrigin::GetRate(double* rate) { return Give(1.0, rate); }

HRESULT SeekingOrigin::GetPreroll(LONGLONG* preroll) { return Give(LONGLONG{0}, preroll); }

template <class... Parameters, class... Arguments>
HRESULT SeekingForwarder::Forward(HRESULT (IMediaSeeking::*operation)(Parameters...),
                                  Arguments... arguments) {
    // Held for the time of the call: another thread may take the graph apart meanwhile.
    const RefPtr<IMediaSeeking> next = NextSeeking();
    return next ? ((*next).*operation)(arguments...) : E_NOTIMPL;
}

HRESULT SeekingForwarder::GetCapabilities(DWORD* capabilities) {
    return Forward(&IMediaSeeking::GetCapabilities, capabilities);
}
HRESULT SeekingForwarder::CheckCapabilities(DWORD* capabilities) {
    return Forward(&IMediaSeeking::CheckCapabilities, capabilities);
}
HRESULT SeekingForwarder::IsFormatSupported(const GUID* format) {
    return Forward(&IMediaSeeking::IsFormatSupported, format);
}
HRESULT SeekingForwarder::QueryPreferredFormat(GUID* format) {
    return Forward(&IMediaSeeking::QueryPreferredFormat, format);
}
HRESULT SeekingForwarder::GetTimeFormat(GUID* format) {
    return Forward(&IMediaSeeking::GetTimeFormat, format);
}
HRESULT SeekingForwarder::IsUsingTimeFormat(const GUID* format) {
    return Forward(&IMediaSeeking::IsUsingTimeFormat, format);
}
HRESULT SeekingForwarder::SetTimeFormat(const GUID* format) {
    return Forward(&IMediaSeeking::SetTimeFormat, format);
}
HRESULT SeekingForwarder::GetDuration(LONGLONG* duration) {
    return Forward(&IMediaSeeking::GetDuration, duration);
}
HRESULT SeekingForwarder::GetStopPosition(LONGLONG* stop) {
    return Forward(&IMediaSeeking::GetStopPosition, stop);
}
HRESULT SeekingForwarder::GetCurrentPosition(LONGLONG* current) {
    return Forward(&IMediaSeeking::GetCurrentPosition, current);
}
HRESULT SeekingForwarder::ConvertTimeFormat(LONGLONG* target, const GUID* targetFormat, LONGLONG source,
                                            const GUID* sourceFormat) {
    return Forward(&IMediaSeeking::ConvertTimeFormat, target, targetFormat, source, sourceFormat);
}
HRESULT SeekingForwarder::SetPositions(LONGLONG* current, DWORD currentFlags, LONGLONG* stop,
                                       DWORD stopFlags) {
    return Forward(&IMediaSeeking::SetPositions, current, currentFlags, stop, stopFlags);
}
HRESULT SeekingForwarder::GetPositions(LONGLONG* current, LONGLONG* stop) {
    return Forward(&IMediaSeeking::GetPositions, current, stop);
}
HRESULT SeekingForwarder::GetAvailable(LONGLONG* earliest, LONGLONG* latest) {
    return Forward(&IMediaSeeking::GetAvailable, earliest, latest);
}
HRESULT SeekingForwarder::SetRate(double rate) { return Forward(&IMediaSeeking::SetRate, rate); }
HRESULT SeekingForwarder::GetRate(double* rate) { return Forward(&IMediaSeeking::GetRate, rate); }
HRESULT SeekingForwarder::GetPreroll(LONGLONG* preroll) {
    return Forward(&IMediaSeeking::GetPreroll, preroll);
}

// Null without a connection, and then the forwarder answers E_NOTIMPL.
RefPtr<IMediaSeeking> SeekingBehind(IPin& input) {
    RefPtr<IPin> output;
    if (FAILED(input.ConnectedTo(output.Put()))) return {};
    return FaceOf<IMediaSeeking>(output.Get(), IID_IMediaSeeking);
}
