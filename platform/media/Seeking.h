// The two sides of IMediaSeeking in the layer: one that knows the stream, and those that hand the question on
// against the flow of data until it gets there. Positions are times in units of 100 ns, no other format; no
// stop positions, and one speed.
#pragma once

#include "platform/media/ComObject.h"
#include "platform/media/GraphInterfaces.h"

// Answers all questions from three.
class SeekingOrigin : public IMediaSeeking {
public:
    HRESULT GetCapabilities(DWORD* capabilities) override;
    HRESULT CheckCapabilities(DWORD* capabilities) override;
    HRESULT IsFormatSupported(const GUID* format) override;
    HRESULT QueryPreferredFormat(GUID* format) override;
    HRESULT GetTimeFormat(GUID* format) override;
    HRESULT IsUsingTimeFormat(const GUID* format) override;
    HRESULT SetTimeFormat(const GUID* format) override;
    HRESULT GetDuration(LONGLONG* duration) override;
    HRESULT GetStopPosition(LONGLONG* stop) override;
    HRESULT GetCurrentPosition(LONGLONG* current) override;
    HRESULT ConvertTimeFormat(LONGLONG* target, const GUID* targetFormat, LONGLONG source,
                              const GUID* sourceFormat) override;
    HRESULT SetPositions(LONGLONG* current, DWORD currentFlags, LONGLONG* stop, DWORD stopFlags) override;
    HRESULT GetPositions(LONGLONG* current, LONGLONG* stop) override;
    HRESULT GetAvailable(LONGLONG* earliest, LONGLONG* latest) override;
    HRESULT SetRate(double rate) override;
    HRESULT GetRate(double* rate) override;
    HRESULT GetPreroll(LONGLONG* preroll) override;

protected:
    ~SeekingOrigin() = default;

    // A failure where it isn't known.
    virtual HRESULT Duration(REFERENCE_TIME& duration) = 0;
    // Where the stream was last told to start from.
    virtual REFERENCE_TIME StartPosition() = 0;
    // Makes the stream go on from `position`, which isn't negative; one after the end ends it.
    virtual HRESULT SeekTo(REFERENCE_TIME position) = 0;
};

// Hands everything on; E_NOTIMPL where there is nobody to ask.
class SeekingForwarder : public IMediaSeeking {
public:
    HRESULT GetCapabilities(DWORD* capabilities) override;
    HRESULT CheckCapabilities(DWORD* capabilities) override;
    HRESULT IsFormatSupported(const GUID* format) override;
    HRESULT QueryPreferredFormat(GUID* format) override;
    HRESULT GetTimeFormat(GUID* format) override;
    HRESULT IsUsingTimeFormat(const GUID* format) override;
    HRESULT SetTimeFormat(const GUID* format) override;
    HRESULT GetDuration(LONGLONG* duration) override;
    HRESULT GetStopPosition(LONGLONG* stop) override;
    HRESULT GetCurrentPosition(LONGLONG* current) override;
    HRESULT ConvertTimeFormat(LONGLONG* target, const GUID* targetFormat, LONGLONG source,
                              const GUID* sourceFormat) override;
    HRESULT SetPositions(LONGLONG* current, DWORD currentFlags, LONGLONG* stop, DWORD stopFlags) override;
    HRESULT GetPositions(LONGLONG* current, LONGLONG* stop) override;
    HRESULT GetAvailable(LONGLONG* earliest, LONGLONG* latest) override;
    HRESULT SetRate(double rate) override;
    HRESULT GetRate(double* rate) override;
    HRESULT GetPreroll(LONGLONG* preroll) override;

protected:
    ~SeekingForwarder() = default;

    // Whom to ask; null for nobody.
    virtual RefPtr<IMediaSeeking> NextSeeking() = 0;

private:
    template <class... Parameters, class... Arguments>
    HRESULT Forward(HRESULT (IMediaSeeking::*operation)(Parameters...), Arguments... arguments);
};

// The seeking of the output pin that an input pin is connected to.
RefPtr<IMediaSeeking> SeekingBehind(IPin& input);
