// What VlDSAudioStreamReader.ax offers to those who load it: the factory of its one filter.
#include "platform/media/ClassObject.h"
#include "platform/media/streamreader/StreamReaderFilter.h"

VL_PLATFORM_API HRESULT DllGetClassObject(const GUID& classId, const GUID& iid, void** factory) {
    return GetClassObject({{CLSID_StreamReader, MakeInstance<StreamReaderFilter>}}, classId, iid, factory);
}
