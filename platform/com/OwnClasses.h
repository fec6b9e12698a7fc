// The classes that the layer brings along: their identifiers, and which of its libraries has which. They need
// no registry. What the classes do is told where they are written.
#pragma once

#include "platform/base/Guid.h"

inline constexpr GUID CLSID_FilterGraph = MakeGuid("E436EBB3-524F-11CE-9F53-0020AF0BA770");
inline constexpr GUID CLSID_AsyncReader = MakeGuid("E436EBB5-524F-11CE-9F53-0020AF0BA770");
inline constexpr GUID CLSID_WaveParser = MakeGuid("D51BD5A1-7548-11CF-A520-0080C77EF58A");
inline constexpr GUID CLSID_ACMWrapper = MakeGuid("6A08CF80-0E18-11CF-A24D-0020AFD79767");
inline constexpr GUID CLSID_StreamReader = MakeGuid("CE997B7A-36C8-467A-BEE8-14FEF2EEDCF3");

struct OwnClass {
    const GUID& id;
    const char* library;  // beside libvlplatform
};
inline constexpr OwnClass kOwnClasses[] = {
    {CLSID_FilterGraph, "libvlmedia.so"},
    {CLSID_AsyncReader, "libvlmedia.so"},
    {CLSID_WaveParser, "libvlmedia.so"},
    {CLSID_ACMWrapper, "libvlmedia.so"},
    {CLSID_StreamReader, "Filters/VlDSAudioStreamReader.ax"},
};
