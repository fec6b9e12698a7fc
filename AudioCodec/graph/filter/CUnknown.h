// The root of filters, pins and allocators: a count, and an identity that may be lent from an outer object.
// An object of many faces has two sets of the IUnknown operations: those of its faces go to the owner (the
// outer object, or else itself), and the non-delegating ones are its own. References from any thread.
#pragma once

#include "platform/base/Types.h"
#include "platform/com/ReferenceCount.h"
#include "platform/com/Unknown.h"

struct INonDelegatingUnknown {
    virtual HRESULT NonDelegatingQueryInterface(const GUID& iid /*in*/,
                                                void** object /*out: one reference*/) = 0;
    virtual uint32_t NonDelegatingAddRef() = 0;
    virtual uint32_t NonDelegatingRelease() = 0;

protected:
    ~INonDelegatingUnknown() = default;
};

// What has an identity isn't copied.
class CBaseObject {
public:
    CBaseObject(const CBaseObject&) = delete;
    CBaseObject& operator=(const CBaseObject&) = delete;

protected:
    CBaseObject() = default;
    ~CBaseObject() = default;
};

class CUnknown : public INonDelegatingUnknown, public CBaseObject {
public:
    // Without a reference. The outer object, which may be null, isn't counted: it owns this one.
    explicit CUnknown(IUnknown* outer) : m_owner(outer ? outer : &m_self) {}

    // Answers IID_IUnknown; E_NOINTERFACE with null for all else, E_POINTER for a null receiver.
    HRESULT NonDelegatingQueryInterface(const GUID& iid, void** object) override;
    uint32_t NonDelegatingAddRef() override;
    // Deletes the object with the last reference.
    uint32_t NonDelegatingRelease() override;
    virtual ~CUnknown() = default;

    IUnknown* GetOwner() { return m_owner; }

private:
    // The object as an IUnknown that stands apart from its faces.
    class Self final : public IUnknown {
    public:
        explicit Self(CUnknown& object) : m_object(object) {}
        HRESULT QueryInterface(const GUID& iid, void** object) override {
            return m_object.NonDelegatingQueryInterface(iid, object);
        }
        uint32_t AddRef() override { return m_object.NonDelegatingAddRef(); }
        uint32_t Release() override { return m_object.NonDelegatingRelease(); }

    private:
        CUnknown& m_object;
    };

    Self m_self{*this};
    IUnknown* const m_owner;
    ReferenceCount m_references{0};
};

// Hands out one face of an object with one reference: S_OK, or E_POINTER for a null receiver.
HRESULT GetInterface(IUnknown* face, void** object);
