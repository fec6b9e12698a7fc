// A long source's frames at the rate and with the channels of a target, made in pieces by several threads and
// given in order: sample for sample what one thread would read. The caller's own thread makes pieces too
// while the next one isn't there, so that the work is done with whatever threads can be had, if need be
// with none.
//
//   pieces:   ... | lent | made | being made | made | being made | free | ...
//                   ^ the caller has it        m_claimed ^         the ring ends, nothing is begun beyond it
//
// Memory is bounded by the ring, whatever the source's length. Used by one thread at a time.
#pragma once

#include <atomic>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

#include "capi/audio/SourceStages.h"

class ConvertedPieces {
public:
    // Whether pieces are the same frames, and sooner there, of a source that can be moved in. Where the audio
    // has to be decoded they may be neither: decoders keep state, and are slow to begin.
    static bool CanMake(const SourceFacts& facts) { return facts.frames && facts.directBits != 0; }
    // As many threads as are worth it for so many frames of the target, of those wished for (0: a thread for
    // each core); with 1 pieces are of no use.
    static uint32_t UsefulThreads(uint32_t wished, int64_t frames);

    // From the target's frame `first` on. Input and facts are borrowed. Throws Failure.
    ConvertedPieces(const Module& module, Input& input, const SourceFacts& facts,
                    const ConversionTarget& target, int64_t first, uint32_t threads);
    ~ConvertedPieces();  // waits for what is being made, at the most some thousand frames of each thread
    ConvertedPieces(const ConvertedPieces&) = delete;
    ConvertedPieces& operator=(const ConvertedPieces&) = delete;

    struct Frames {
        const int16_t* samples = nullptr;
        size_t count = 0;
    };
    // The next frames, lent until the next call; none at the end. Throws what failed in making them, which a
    // straight read would have met at the same place.
    Frames Next();
    // After the end: whether less came than the file promises.
    bool EndedEarly() const { return m_endedEarly; }

private:
    class Maker;
    struct Piece {
        bool isMade = false;
        std::vector<int16_t> samples;
        size_t frames = 0;  // fewer than a piece has are the source's end
        bool endedEarly = false;
        std::exception_ptr failure;
    };

    Piece& At(int64_t index) { return m_ring[static_cast<size_t>(index) % m_ring.size()]; }
    bool CanClaim() const;
    void MakeNext(Maker& maker, std::unique_lock<std::mutex>& held);
    void Work() noexcept;
    void StartWorkers(uint32_t count);
    void Stop() noexcept;

    const Module& m_module;
    Input& m_input;
    const SourceFacts& m_facts;
    const ConversionTarget m_target;
    const int64_t m_first;
    const int64_t m_count;         // pieces; the last isn't full, so that the end is met in it
    std::unique_ptr<Maker> m_own;  // the caller's

    std::mutex m_lock;  // of what follows, but for the pieces that somebody makes or has
    std::condition_variable m_wasMade;
    std::condition_variable m_hasRoom;
    std::vector<Piece> m_ring;
    int64_t m_claimed = 0;  // the next piece that nobody has begun
    int64_t m_given = 0;    // the next piece for the caller
    int64_t m_kept = 0;     // the first piece that is still needed: m_given, or the one before it
    bool m_endedEarly = false;
    std::atomic<bool> m_stopped = false;
    std::vector<std::thread> m_workers;  // the last: they use all of it
};
