#include "AudioCodec/attributes/InterfaceHolder.h"

InterfaceHolder::InterfaceHolder(const GUID* iid, IBase* object, bool addRef)
    : m_iid(iid), m_object(object), m_addRef(addRef) {
    if (!addRef || !object) return;  // an object may have answered 0 with no interface
    void* counted = nullptr;
    m_status = object->QueryInterface(iid, &counted);
    m_object = m_status == RESULT_OK ? static_cast<IBase*>(counted) : nullptr;
}

InterfaceHolder::~InterfaceHolder() {
    if (m_addRef && m_object) m_object->Release();
}

bool InterfaceHolder::Matches(const GUID* iid, const IBase* object) const {
    return m_object && iid && *m_iid == *iid && (!object || object == m_object);
}
