// Structures and identifiers that media interfaces exchange. Facts of the platform, without behaviour.
#pragma once

#include "platform/base/Guid.h"
#include "platform/base/Types.h"
#include "platform/com/OwnClasses.h"
#include "platform/com/Unknown.h"

struct IBaseFilter;
struct IFilterGraph;

using LONGLONG = int64_t;
using DWORD_PTR = uintptr_t;
using LONG_PTR = intptr_t;
using REFERENCE_TIME = int64_t;  // units of 100 ns
using OAEVENT = LONG_PTR;
using OAFilterState = LONG;  // a FILTER_STATE
using BSTR = WCHAR*;

inline constexpr REFERENCE_TIME kTimeUnitsPerSecond = 10'000'000;
inline constexpr REFERENCE_TIME kEndOfTime = 0x7FFFFFFFFFFFFFFF;
inline constexpr GUID GUID_NULL = {};

enum FILTER_STATE : int32_t { State_Stopped = 0, State_Paused = 1, State_Running = 2 };
enum PIN_DIRECTION : int32_t { PINDIR_INPUT = 0, PINDIR_OUTPUT = 1 };

// What flows over a connection. The block pbFormat is CoTaskMemAlloc's; pUnk is counted.
struct AM_MEDIA_TYPE {
    GUID majortype;
    GUID subtype;
    BOOL bFixedSizeSamples;
    BOOL bTemporalCompression;
    ULONG lSampleSize;  // bytes, where samples have a fixed size
    GUID formattype;    // what pbFormat points to
    IUnknown* pUnk;
    ULONG cbFormat;  // bytes
    BYTE* pbFormat;
};

inline constexpr size_t MAX_FILTER_NAME = 128;  // units, the terminator included
inline constexpr size_t MAX_PIN_NAME = 128;

struct FILTER_INFO {
    WCHAR achName[MAX_FILTER_NAME];
    IFilterGraph* pGraph;  // one reference, or null
};

struct PIN_INFO {
    IBaseFilter* pFilter;  // one reference, or null
    PIN_DIRECTION dir;
    WCHAR achName[MAX_PIN_NAME];
};

struct ALLOCATOR_PROPERTIES {
    LONG cBuffers;  // number of buffers
    LONG cbBuffer;  // bytes of each, without the prefix
    LONG cbAlign;   // alignment of prefix + buffer, bytes
    LONG cbPrefix;  // bytes in front of each buffer
};

enum AM_SAMPLE_PROPERTY_FLAGS : uint32_t {
    AM_SAMPLE_SPLICEPOINT = 0x01,
    AM_SAMPLE_PREROLL = 0x02,
    AM_SAMPLE_DATADISCONTINUITY = 0x04,
    AM_SAMPLE_TYPECHANGED = 0x08,
    AM_SAMPLE_TIMEVALID = 0x10,
    AM_SAMPLE_TIMEDISCONTINUITY = 0x40,
    AM_SAMPLE_FLUSH_ON_PAUSE = 0x80,
    AM_SAMPLE_STOPVALID = 0x100,
    AM_SAMPLE_ENDOFSTREAM = 0x200,
};

struct AM_SAMPLE2_PROPERTIES {
    DWORD cbData;  // bytes of this structure that are meant
    DWORD dwTypeSpecificFlags;
    DWORD dwSampleFlags;  // AM_SAMPLE_PROPERTY_FLAGS
    LONG lActual;         // bytes in use
    REFERENCE_TIME tStart;
    REFERENCE_TIME tStop;
    DWORD dwStreamId;
    AM_MEDIA_TYPE* pMediaType;
    BYTE* pbBuffer;
    LONG cbBuffer;  // bytes
};

// For IMemAllocator::GetBuffer.
inline constexpr DWORD AM_GBF_PREVFRAMESKIPPED = 1;
inline constexpr DWORD AM_GBF_NOTASYNCPOINT = 2;
inline constexpr DWORD AM_GBF_NOWAIT = 4;

// For IMediaSeeking::SetPositions.
inline constexpr DWORD AM_SEEKING_NoPositioning = 0;
inline constexpr DWORD AM_SEEKING_AbsolutePositioning = 1;
inline constexpr DWORD AM_SEEKING_RelativePositioning = 2;
inline constexpr DWORD AM_SEEKING_PositioningBitsMask = 3;

// For IMediaSeeking::GetCapabilities.
inline constexpr DWORD AM_SEEKING_CanSeekAbsolute = 0x01;
inline constexpr DWORD AM_SEEKING_CanSeekForwards = 0x02;
inline constexpr DWORD AM_SEEKING_CanSeekBackwards = 0x04;
inline constexpr DWORD AM_SEEKING_CanGetCurrentPos = 0x08;
inline constexpr DWORD AM_SEEKING_CanGetStopPos = 0x10;
inline constexpr DWORD AM_SEEKING_CanGetDuration = 0x20;

enum QualityMessageType : int32_t { Famine, Flood };
struct Quality {
    QualityMessageType Type;
    LONG Proportion;
    REFERENCE_TIME Late;
    REFERENCE_TIME TimeStamp;
};

// How an audio format is told in a media type's block, FORMAT_WaveFormatEx. cbSize bytes follow.
#pragma pack(push, 1)
struct WAVEFORMATEX {
    WORD wFormatTag;
    WORD nChannels;
    DWORD nSamplesPerSec;
    DWORD nAvgBytesPerSec;
    WORD nBlockAlign;
    WORD wBitsPerSample;
    WORD cbSize;
};
#pragma pack(pop)
static_assert(sizeof(WAVEFORMATEX) == 18);

struct AMOVIESETUP_FILTER;  // what a filter would register; none does

inline constexpr GUID MEDIATYPE_Stream = MakeGuid("E436EB83-524F-11CE-9F53-0020AF0BA770");
inline constexpr GUID MEDIATYPE_Audio = MakeGuid("73647561-0000-0010-8000-00AA00389B71");
inline constexpr GUID MEDIASUBTYPE_PCM = MakeGuid("00000001-0000-0010-8000-00AA00389B71");
inline constexpr GUID FORMAT_WaveFormatEx = MakeGuid("05589F81-C356-11CE-BF01-00AA0055595A");
inline constexpr GUID TIME_FORMAT_MEDIA_TIME = MakeGuid("7B785574-8C82-11CF-BC0C-00AA00AC74F6");
