// A thread behind a handle, which a wait can take once its function has returned. A handle that is closed
// earlier leaves the thread running; one that is closed later waits for the last steps of the thread, so that
// after it no code of the thread runs any more.
#pragma once

#include <functional>
#include <memory>
#include <thread>

#include "platform/sync/WaitableObject.h"

class ThreadObject final : public WaitableObject {
public:
    static constexpr uint32_t kKind = kThread;
    // Starts the thread. Throws std::bad_alloc or std::system_error if there can be none.
    explicit ThreadObject(std::function<void()> work);
    ~ThreadObject() override;

private:
    // What the thread knows of its object, which may go first.
    struct Link {
        Mutex lock;
        ThreadObject* object VL_GUARDED_BY(lock) = nullptr;  // null once the handle is closed
        bool ended VL_GUARDED_BY(lock) = false;
    };

    bool TryTake() override VL_REQUIRES(m_lock) { return m_ended; }
    static void End(Link& link);

    bool m_ended VL_GUARDED_BY(m_lock) = false;
    std::shared_ptr<Link> m_link = std::make_shared<Link>();
    std::thread m_thread;  // the last: started when all else stands
};
