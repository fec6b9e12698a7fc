// What libvlmedia offers to those who load it: the factories of its classes.
#include "platform/media/ClassObject.h"
#include "platform/media/Decoder.h"
#include "platform/media/FileSource.h"
#include "platform/media/FilterGraph.h"
#include "platform/media/Parser.h"

VL_PLATFORM_API HRESULT DllGetClassObject(const GUID& classId, const GUID& iid, void** factory) {
    av_log_set_level(AV_LOG_QUIET);  // results tell what went wrong; the terminal is the host's
    return GetClassObject({{CLSID_FilterGraph, MakeInstance<FilterGraph>},
                           {CLSID_AsyncReader, MakeInstance<FileSource>},
                           {CLSID_WaveParser, MakeInstance<Parser>},
                           {CLSID_ACMWrapper, MakeInstance<Decoder>}},
                          classId, iid, factory);
}
