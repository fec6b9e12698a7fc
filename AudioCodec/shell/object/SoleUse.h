// Tells who writes a host that two threads are inside one object at once, where the rule is one at a time. In
// a debug build, by a line on standard error that names the object and both operations; in a release build it
// is nothing. Any thread.
//
// Decisions: it only tells. The second call goes on as it does in a release build: a refusal would be a rule
// that what ships doesn't have. A call from inside another one on the same thread, through a host's stream,
// is no second thread.
#pragma once

#ifdef NDEBUG

class SoleUse {
public:
    class [[nodiscard]] Scope {
    public:
        template <class Object>
        Scope(SoleUse& /*use*/, Object& /*object*/, const char* /*operation*/) {}
        ~Scope() {}  // NOLINT(modernize-use-equals-default): so that it counts as used
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;
    };
};

#else

#include <atomic>
#include <thread>

class SoleUse {
public:
    // Stands for as long as an operation of the object runs.
    class [[nodiscard]] Scope {
    public:
        template <class Object>
        Scope(SoleUse& use, Object& object, const char* operation) {
            if (!Enter(use, operation)) use.Tell(object.GetClassName(), operation);
        }
        ~Scope();
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        bool Enter(SoleUse& use, const char* operation);

        SoleUse* m_entered = nullptr;  // null where somebody was inside before
    };

private:
    void Tell(const char16_t* object, const char* operation) const;

    std::atomic<std::thread::id> m_thread{};        // the one inside; none in between
    std::atomic<const char*> m_operation{nullptr};  // its outermost
};

#endif
