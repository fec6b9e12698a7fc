// A class of the module's own shape, for tests of the lower half: tells when it goes, and can refuse to be
// built.
#pragma once

#include "AudioCodec/shell/templates/BaseImpl.h"

inline constexpr GUID IID_ISample = MakeGuid("00000000-0000-0000-0000-0000000000A1");
struct ISample : IAttributeContainer64 {
protected:
    ~ISample() = default;
};

class SampleObject : public CAttributeContainerImpl<ISample> {
public:
    explicit SampleObject(std::atomic<int>* deleted = nullptr, void (*whenBuilt)() = nullptr)
        : m_deleted(deleted) {
        PresetString(1, u"preset");
        if (whenBuilt) whenBuilt();
    }
    ~SampleObject() override {
        if (m_deleted) ++*m_deleted;
    }
    Result InternalQueryInterface(const GUID* iid, void** object) override {
        static constexpr InterfaceTableEntry kInterfaces[] = {
            {&IID_IAttributeContainer64, 0}, {&IID_ISample, 0}, {nullptr, 0}};
        return FindInterfaceEntry(this, kInterfaces, iid, object);
    }
    const char16_t* GetClassName() override { return u"SampleObject"; }

private:
    std::atomic<int>* m_deleted;
};
