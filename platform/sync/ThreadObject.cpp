#include "platform/sync/ThreadObject.h"

#include <utility>

#include "platform/sync/StartThread.h"

ThreadObject::ThreadObject(std::function<void()> work) : WaitableObject(kKind) {
    m_link->object = this;
    m_thread = StartThread([link = m_link, work = std::move(work)] {
        work();
        End(*link);
    });
}

ThreadObject::~ThreadObject() {
    const bool ended = [this] {
        const MutexLock lock(m_link->lock);
        m_link->object = nullptr;
        return m_link->ended;
    }();
    if (ended) {
        m_thread.join();
    } else {
        m_thread.detach();
    }
}

void ThreadObject::End(Link& link) {
    const MutexLock linkLock(link.lock);
    link.ended = true;
    if (!link.object) return;
    const MutexLock lock(link.object->m_lock);
    link.object->m_ended = true;
    link.object->WakeWaiters();
}
