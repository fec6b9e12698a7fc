// Where an index lies in an ordered container that can only be walked: the place that was asked for last is
// remembered, so that one index after the other costs a step each, and not a walk from the start. Whoever
// changes the container says so with Forget. Copies remember nothing. One thread at a time.
#pragma once

#include <cstddef>
#include <iterator>

template <class Container>
class IndexedPlace {
public:
    IndexedPlace() = default;
    IndexedPlace(const IndexedPlace&) noexcept {}
    IndexedPlace& operator=(const IndexedPlace&) noexcept {
        Forget();
        return *this;
    }
    ~IndexedPlace() = default;

    // `index` is below the container's size.
    typename Container::const_iterator Find(const Container& container, size_t index) {
        // From the start, where that is nearer.
        if (!m_isKnown || index < m_index / 2) {
            m_place = container.begin();
            m_index = 0;
            m_isKnown = true;
        }
        std::advance(m_place, static_cast<std::ptrdiff_t>(index) - static_cast<std::ptrdiff_t>(m_index));
        m_index = index;
        return m_place;
    }
    void Forget() { m_isKnown = false; }

private:
    typename Container::const_iterator m_place{};
    size_t m_index = 0;
    bool m_isKnown = false;
};
