// One interface that hangs on a store: counted, then dropped with the holder, or only borrowed.
#pragma once

#include <memory>

#include "AudioCodec/shell/object/IBase.h"

class InterfaceHolder {
public:
    // The identifier must outlive the holder. With `addRef` the reference is had through QueryInterface,
    // whose outcome is GetStatus.
    InterfaceHolder(const GUID* iid, IBase* object, bool addRef);
    InterfaceHolder(const InterfaceHolder&) = delete;
    InterfaceHolder& operator=(const InterfaceHolder&) = delete;
    ~InterfaceHolder();

    // Whether it holds an object under this identifier, by value; and just this object, if one is given.
    bool Matches(const GUID* iid, const IBase* object) const;

    const GUID* GetIid() const { return m_iid; }
    IBase* GetObject() const { return m_object; }
    bool HasReference() const { return m_addRef; }
    Result GetStatus() const { return m_status; }

    std::unique_ptr<InterfaceHolder> next;  // of those that are taken out together

private:
    const GUID* m_iid;
    IBase* m_object;  // null if the reference could not be had
    bool m_addRef;    // holds a reference
    Result m_status = RESULT_OK;
};
