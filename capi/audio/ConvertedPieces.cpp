#include "capi/audio/ConvertedPieces.h"

#include <algorithm>

#include "platform/sync/StartThread.h"

namespace {

constexpr size_t kPieceFrames = 32768;  // to which the run-in after a seek adds little
constexpr size_t kStepFrames = 8192;    // between two looks whether the work is still wanted
constexpr int64_t kLeastPieces = 2;     // for each thread, which costs a filter of its own

int64_t LengthOf(const SourceFacts& facts, const ConversionTarget& target, int64_t first) {
    return std::max<int64_t>(ConvertedLength(*facts.frames, facts.rate, target.rate) - first, 0);
}

}  // namespace

// What one thread makes pieces with: stages of its own over the common input.
class ConvertedPieces::Maker {
public:
    explicit Maker(const ConvertedPieces& all)
        : m_readers(all.m_module),
          m_stages(m_readers, all.m_input, all.m_facts),
          m_last(m_stages.Build(all.m_target)),
          m_stopped(all.m_stopped) {}

    void Make(Piece& piece, int64_t place) noexcept {
        piece.frames = 0;
        piece.failure = nullptr;
        try {
            piece.samples.resize(kPieceFrames * m_last.Channels());
            m_last.SeekTo(place);
            while (piece.frames < kPieceFrames && !m_stopped) {
                const size_t got = m_last.Read(piece.samples.data() + piece.frames * m_last.Channels(),
                                               std::min(kPieceFrames - piece.frames, kStepFrames));
                if (got == 0) break;
                piece.frames += got;
            }
            piece.endedEarly = m_stages.Source().EndedEarly();
        } catch (...) {
            piece.failure = std::current_exception();
        }
    }

private:
    ModuleReaders m_readers;
    SourceStages m_stages;
    FrameSource& m_last;
    const std::atomic<bool>& m_stopped;
};

uint32_t ConvertedPieces::UsefulThreads(uint32_t wished, int64_t frames) {
    const int64_t pieces = frames / static_cast<int64_t>(kPieceFrames);
    const uint32_t most = wished != 0 ? wished : std::thread::hardware_concurrency();
    return static_cast<uint32_t>(std::clamp<int64_t>(pieces / kLeastPieces, 1, std::max(most, 1u)));
}

ConvertedPieces::ConvertedPieces(const Module& module, Input& input, const SourceFacts& facts,
                                 const ConversionTarget& target, int64_t first, uint32_t threads)
    : m_module(module),
      m_input(input),
      m_facts(facts),
      m_target(target),
      m_first(first),
      m_count(LengthOf(facts, target, first) / static_cast<int64_t>(kPieceFrames) + 1),
      m_own(std::make_unique<Maker>(*this)),
      // For each thread one in the making and one that is made while the caller writes or makes another.
      m_ring(size_t{threads} * 2 + 1) {
    StartWorkers(threads - 1);
}

ConvertedPieces::~ConvertedPieces() { Stop(); }

// Where there can be no more threads, those that are there do the work.
void ConvertedPieces::StartWorkers(uint32_t count) {
    try {
        m_workers.reserve(count);
        while (m_workers.size() < count) m_workers.push_back(StartThread([this] { Work(); }));
    } catch (const std::exception&) {
    }
}

void ConvertedPieces::Stop() noexcept {
    {
        const std::lock_guard held(m_lock);  // or a worker that is about to wait would miss it
        m_stopped = true;
    }
    m_hasRoom.notify_all();
    for (std::thread& worker : m_workers) worker.join();
    m_workers.clear();
}

bool ConvertedPieces::CanClaim() const {
    return m_claimed < m_count && m_claimed < m_kept + static_cast<int64_t>(m_ring.size());
}

// The piece belongs to this thread alone until it is marked as made.
void ConvertedPieces::MakeNext(Maker& maker, std::unique_lock<std::mutex>& held) {
    const int64_t index = m_claimed++;
    Piece& piece = At(index);
    held.unlock();
    maker.Make(piece, m_first + index * static_cast<int64_t>(kPieceFrames));
    held.lock();
    piece.isMade = true;
}

void ConvertedPieces::Work() noexcept {
    std::unique_ptr<Maker> maker;
    try {
        maker = std::make_unique<Maker>(*this);
    } catch (...) {
        return;  // the others do the work
    }
    std::unique_lock held(m_lock);
    while (!m_stopped && m_claimed < m_count) {
        if (CanClaim()) {
            MakeNext(*maker, held);
            m_wasMade.notify_one();
        } else {
            m_hasRoom.wait(held);
        }
    }
}

ConvertedPieces::Frames ConvertedPieces::Next() {
    std::unique_lock held(m_lock);
    // What was lent goes back into the ring.
    if (m_kept < m_given) At(m_kept++).isMade = false;
    m_hasRoom.notify_all();
    if (m_given == m_count || m_stopped) return {};
    Piece& piece = At(m_given);
    while (!piece.isMade) {
        if (CanClaim())
            MakeNext(*m_own, held);
        else
            m_wasMade.wait(held);
    }
    ++m_given;
    // Nothing behind a failure or the end is wanted any more, however the pieces after it came out.
    if (piece.failure || piece.frames < kPieceFrames) {
        m_stopped = true;
        m_endedEarly = piece.endedEarly;
        m_hasRoom.notify_all();
    }
    if (piece.failure) std::rethrow_exception(std::exchange(piece.failure, nullptr));
    return {piece.samples.data(), piece.frames};
}
