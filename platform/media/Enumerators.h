// Enumerators over a list as it was when they were made; what changes after that they don't see.
#pragma once

#include <vector>

#include "platform/media/ComObject.h"
#include "platform/media/GraphInterfaces.h"
#include "platform/media/MediaType.h"

// How things of one kind are kept and handed out.
template <class Enumerating, class Thing, const GUID& Id>
struct CountedThings {
    using Interface = Enumerating;
    using Kept = RefPtr<Thing>;
    using Given = Thing*;
    static const GUID& Iid() { return Id; }
    static Given Give(const Kept& kept) { return Kept(kept).Detach(); }
};
using PinThings = CountedThings<IEnumPins, IPin, IID_IEnumPins>;
using FilterThings = CountedThings<IEnumFilters, IBaseFilter, IID_IEnumFilters>;

struct TypeThings {
    using Interface = IEnumMediaTypes;
    using Kept = MediaType;
    using Given = AM_MEDIA_TYPE*;
    static const GUID& Iid() { return IID_IEnumMediaTypes; }
    static Given Give(const Kept& kept) {
        const Given block = NewMediaTypeBlock(kept.Get());
        if (!block) throw std::bad_alloc();
        return block;
    }
};

template <class Things>
class Enumerator final : public ComObject<typename Things::Interface> {
public:
    explicit Enumerator(std::vector<typename Things::Kept> things) : m_things(std::move(things)) {}

    HRESULT QueryInterface(const GUID& iid, void** object) override {
        return GiveFace({{Things::Iid(), this}}, iid, object);
    }
    HRESULT Next(ULONG count, typename Things::Given* things, ULONG* fetched) override {
        if (!things) return E_POINTER;
        if (!fetched && count > 1) return E_INVALIDARG;
        return AtBorder(ResultOfThrow, [&] {
            ULONG done = 0;
            if (fetched) *fetched = 0;
            for (; done < count && m_place < m_things.size(); ++done) {
                things[done] = Things::Give(m_things[m_place++]);
                if (fetched) *fetched = done + 1;
            }
            return done == count ? S_OK : S_FALSE;
        });
    }
    HRESULT Skip(ULONG count) override {
        if (count > m_things.size() - m_place) return S_FALSE;
        m_place += count;
        return S_OK;
    }
    HRESULT Reset() override {
        m_place = 0;
        return S_OK;
    }
    HRESULT Clone(typename Things::Interface** copy) override {
        if (!copy) return E_POINTER;
        return AtBorder(ResultOfThrow, [&] {
            auto other = Make<Enumerator>(m_things);
            other->m_place = m_place;
            *copy = other.Detach();
            return S_OK;
        });
    }

private:
    const std::vector<typename Things::Kept> m_things;
    size_t m_place = 0;
};

// For operations that give an enumerator.
template <class Things>
HRESULT GiveEnumerator(std::vector<typename Things::Kept> things, typename Things::Interface** enumerator) {
    *enumerator = Make<Enumerator<Things>>(std::move(things)).Detach();
    return S_OK;
}
