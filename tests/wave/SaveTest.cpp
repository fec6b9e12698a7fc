
#include <cerrno>
#include <random>
#include <set>

#include "tests/platform/SystemFaults.h"
#include "tests/support/FailingAllocator.h"
#include "tests/wave/SaveLayouts.h"

namespace {

using namespace save_test;

const Tags kNewTags[] = {
    {},
    {{FourCC("INAM"), "O"}},
    {{FourCC("INAM"), "Odd"}, {FourCC("ICRD"), "2004"}},    // as long as the old ones
    {{FourCC("INAM"), "Newer"}, {FourCC("ICRD"), "2004"}},  // a gap too small for a chunk
    {{FourCC("INAM"), std::string(999, 'n')}, {FourCC("vltg"), "\1\0\2"s}},
};

TEST(Save, KeepsAudioAndForeignChunksInEveryLayout) {
    const WithFaults quick({.flushes = false});
    for (const Layout& layout : Layouts()) {
        for (const Tags& fresh : kNewTags) {
            SCOPED_TRACE(layout.name + ", " + std::to_string(fresh.size()) + " new tags");
            const ScopedFile file(layout.image.Image());
            Save(file, fresh);
            ExpectSaved(file, layout, fresh);
            const std::string once = Bytes(file);
            Save(file, kOld);
            ExpectSaved(file, layout, kOld);
            Save(file, fresh);
            EXPECT_EQ(Bytes(file), once);
        }
    }
}

TEST(Save, TheWritersOwnLayoutEndsAsTheWriterWouldHaveLeftIt) {
    const WithFaults quick({.flushes = false});
    WavImage wrongAlign = WavImage().Header("fmt ", 16).Word16(1).Word16(1).Word32(8000).Word32(16000);
    wrongAlign.Word16(77).Word16(16);
    for (const std::string& audio : {kAudio, kAudio + "."}) {
        for (const Tags& fresh : kNewTags) {
            WavImage expected = Pcm().Chunk("data", audio);
            if (!fresh.empty()) expected.Chunk("LIST", ListOf(fresh));
            WavImage bare = WavImage(wrongAlign).Header("data", static_cast<uint32_t>(audio.size()));
            bare.Bytes(audio).Bytes(audio.size() & 1 ? "?" : "");  // a pad byte should be 0
            for (const WavImage& image : {bare, WavImage(bare).Chunk("LIST", ListOf(kOld))}) {
                const ScopedFile file(image.Image());
                Save(file, fresh);
                EXPECT_EQ(Bytes(file), WavImage(expected).Sized().Text());
            }
        }
    }
}

TEST(Save, LeavesAloneWhatItCannotRewrite) {
    const WavImage image = Pcm().Chunk("data", kAudio).Header("\1\2\3\4", 0xFFFFFFFF);
    const ScopedFile file(WavImage(image).Bytes(std::string(1 << 20, 't')).Image());
    const std::string before = Bytes(file);
    Save(file, kOld);
    EXPECT_TRUE(Bytes(file) == before);
}

// A file with holes: `head`, and `rest` at a place far past.
void WriteSparse(const ScopedFile& file, const WavImage& head, uint64_t place, const WavImage& rest) {
    file.Write(head.Image());
    std::fstream stream(file.Path(), std::ios::binary | std::ios::in | std::ios::out);
    stream.seekp(static_cast<std::streamoff>(place));
    stream << rest.Text();
}

TEST(Save, FilesOfMoreThan4GiB) {
    constexpr uint64_t kFar = uint64_t{0xFFFFFFF0} + 20;
    const ScopedFile file;
    WriteSparse(file, WavImage().Header("JUNK", 0xFFFFFFF0), kFar,
                None().Fmt(1, 1, 8000, 16).Chunk("data", kAudio));
    const WithFaults count({});
    Save(file, kOld);
    EXPECT_EQ(count.BytesWritten(), 0u) << "audio after 4 GiB";

    // The last of the even sizes that leave room for a list of 38 bytes, though not for its copy; and the
    // next.
    for (const uint32_t size : {0xFFFFFFACu, 0xFFFFFFAEu}) {
        const Tags& fresh = kNewTags[3];
        WriteSparse(file, Pcm().Header("data", size), 44 + uint64_t{size},
                    None().Chunk("LIST", ListOf(kOld)));
        const WithFaults bytes({.flushes = false});
        Save(file, fresh);
        EXPECT_EQ(bytes.BytesWritten() != 0, size == 0xFFFFFFACu);
        CWaveFile wave;
        ASSERT_EQ(wave.OpenForReading(file.Wide().c_str(), true), RESULT_OK);
        EXPECT_EQ(wave.Chunks(), size == 0xFFFFFFACu ? fresh : kOld);
        std::string riff(8, '\0');
        std::ifstream(file.Path(), std::ios::binary).read(riff.data(), 8);
        EXPECT_EQ(Number(riff, 4), size == 0xFFFFFFACu ? std::filesystem::file_size(file.Path()) - 8 : 0u);
    }
}

TEST(Save, CostsTheSameForAFileOf500MB) {
    constexpr uint32_t kAudioSize = 500'000'000;
    const ScopedFile file;
    WriteSparse(file, Pcm().Header("data", kAudioSize), 44 + kAudioSize, None().Chunk("LIST", ListOf(kOld)));
    const WithFaults count({});
    Save(file, kNewTags[4]);
    const size_t written = count.BytesWritten();
    EXPECT_LT(written, 44 + 2 * ListOf(kNewTags[4]).size() + 200);
    EXPECT_LT(count.BytesMoved() - written, 16384u);  // a few blocks around headers
    EXPECT_EQ(std::filesystem::file_size(file.Path()), 44 + kAudioSize + 8 + ListOf(kNewTags[4]).size());
}

// --- saves that are disturbed at every place where one can be

// Runs `disturb(file, fresh, n)`, a save that is disturbed at its n-th place, until it returns false: there
// are no more. After each the file is sound, and the next save brings it into order. With a stride, only
// every so many pairs of layout and tags.
template <class Disturb>
void EveryDisturbance(Disturb disturb, size_t stride = 1) {
    const std::vector<Layout> layouts = Layouts();
    for (size_t pair = 0; pair < layouts.size() * std::size(kNewTags); pair += stride) {
        const Layout& layout = layouts[pair / std::size(kNewTags)];
        const Tags& fresh = kNewTags[pair % std::size(kNewTags)];
        bool goesOn = true;
        for (int n = 0; goesOn && !testing::Test::HasFailure(); ++n) {
            SCOPED_TRACE(layout.name + ", " + std::to_string(fresh.size()) + " new tags, " +
                         std::to_string(n));
            const ScopedFile file(layout.image.Image());
            goesOn = disturb(file, fresh, n);
            EXPECT_TRUE(goesOn || n > 0 || Bytes(file) == layout.image.Text()) << "nothing was disturbed";
            ExpectSound(file, layout, fresh);
            const WithFaults none({.flushes = false});
            Save(file, fresh);
            ExpectSound(file, layout, fresh);
            EXPECT_TRUE(CleanWalk(Bytes(file)));
        }
    }
}

// Without the new tags, everything is as it was; what an earlier save left unfinished may be gone, and its
// share of the RIFF size.
void ExpectTakenBack(const ScopedFile& file, const std::string& before, const Tags& fresh) {
    CWaveFile wave;
    EXPECT_EQ(wave.OpenForReading(file.Wide().c_str(), true), RESULT_OK);
    const std::string bytes = Bytes(file);
    const size_t from = bytes.size() < before.size() ? 8 : 0;
    EXPECT_TRUE(wave.Chunks() == fresh || before.substr(from).starts_with(bytes.substr(from)));
}

// Each is torn, as on a full disk. One that lasts leaves the file as a process does that is killed there.
TEST(SaveFaults, AnyChangeThatFails) {
    for (const bool lasting : {false, true}) {
        EveryDisturbance([lasting](const ScopedFile& file, const Tags& fresh, int n) {
            const std::string before = Bytes(file);
            const WithFaults faults(
                {.changesUntilError = n, .lasting = lasting, .flushes = false, .error = EIO});
            Save(file, fresh);
            const bool failed = faults.ChangesSeen() > n;
            if (!lasting && failed) ExpectTakenBack(file, before, fresh);
            return failed;
        });
    }
}

TEST(SaveFaults, NoMemory) {
    const auto disturb = [](const ScopedFile& file, const Tags& fresh, int n) {
        const std::string before = Bytes(file);
        CWaveFile wave;
        EXPECT_EQ(wave.OpenForReading(file.Wide().c_str(), false), RESULT_OK);
        wave.Chunks() = fresh;
        wave.SetModified(true);
        {
            const WithFaults none({.flushes = false});
            const FailingAllocator heap(n);
            wave.CloseFile();
        }
        const bool failed = FailingAllocator::HasFailed();
        ExpectTakenBack(file, before, fresh);
        return failed;
    };
    EveryDisturbance(disturb, 2);
}

// --- power cuts

// What of a change may be on the medium without the rest.
struct Piece {
    bool isCut;
    uint64_t place;
    std::string bytes;
};

// A write comes in sectors, a small one whole; the length that it needs may come without it.
void Split(const FileChange& change, uint64_t fileSize, std::vector<Piece>& pieces) {
    constexpr uint64_t kSector = 512, kWhole = 8;
    const uint64_t size = change.bytes.size();
    const uint64_t end = change.place + size;
    const bool isCut = change.kind == FileChange::Kind::Cut;
    if (isCut || end > fileSize) pieces.push_back({isCut, end, {}});
    for (uint64_t done = 0; done < size;) {
        const uint64_t sector = kSector - (change.place + done) % kSector;
        const uint64_t count = size <= kWhole ? size : std::min(size - done, sector);
        pieces.push_back({false, change.place + done, change.bytes.substr(done, count)});
        done += count;
    }
}

void Apply(std::string& file, const Piece& piece) {
    if (piece.isCut) return file.resize(piece.place);
    file.resize(std::max<size_t>(file.size(), piece.place + piece.bytes.size()));
    file.replace(piece.place, piece.bytes.size(), piece.bytes);
}

// Any of the pieces in their order; where they are too many, a part of all choices.
void AddStates(const std::string& file, const std::vector<Piece>& pieces, std::set<std::string>& states) {
    constexpr size_t kAll = 12;
    std::mt19937 random(1);
    for (uint32_t turn = 0; turn < 1u << std::min(pieces.size(), kAll); ++turn) {
        const uint64_t chosen = pieces.size() <= kAll ? turn : random();
        std::string state = file;
        for (size_t i = 0; i < pieces.size(); ++i)
            if (chosen >> i & 1) Apply(state, pieces[i]);
        states.insert(state);
    }
}

// All that a power cut can leave of a file during these changes, the last of which must be flushed.
std::set<std::string> StatesAfterAPowerCut(std::string file, const std::vector<FileChange>& changes) {
    std::set<std::string> states;
    std::vector<Piece> unflushed;
    std::string written = file;
    for (const FileChange& change : changes) {
        if (change.kind != FileChange::Kind::Flush) {
            const size_t first = unflushed.size();
            Split(change, written.size(), unflushed);
            for (size_t i = first; i < unflushed.size(); ++i) Apply(written, unflushed[i]);
            continue;
        }
        EXPECT_LT(unflushed.size(), 32u);
        AddStates(file, unflushed, states);
        file = written;
        unflushed.clear();
    }
    EXPECT_TRUE(unflushed.empty()) << "not flushed at the end";
    return states;
}

TEST(SaveFaults, AnyStateThatAPowerCutCanLeave) {
    std::vector<Layout> layouts = Layouts();
    WavImage crowd = Pcm();
    for (int i = 0; i < 70; ++i) crowd.Chunk("LIST", ListOf({{FourCC("INAM"), std::to_string(i)}}));
    crowd.Chunk("LIST", ListOf(kOld)).Chunk("data", kAudio);
    layouts.push_back({"a crowd of lists", crowd.Sized()});
    std::string tail = "\1\2\3\4\xFF\xFF\xFF\xFF";
    for (const int16_t sample : Noise(700)) tail += static_cast<char>(sample);
    layouts.push_back({"a long end", Pcm().Chunk("data", kAudio).Sized().Bytes(tail), kAudio, {}, tail});
    for (const Layout& layout : layouts) {
        for (const Tags& fresh : kNewTags) {
            std::vector<FileChange> changes;
            {
                const ScopedFile file(layout.image.Image());
                const WithFaults recording({.flushes = false, .recorded = &changes});
                Save(file, fresh);
            }
            for (const std::string& state : StatesAfterAPowerCut(layout.image.Text(), changes)) {
                SCOPED_TRACE(layout.name + ", " + std::to_string(fresh.size()) + " new tags");
                const ScopedFile file(std::vector<uint8_t>(state.begin(), state.end()));
                ExpectSound(file, layout, fresh);
                const WithFaults quick({.flushes = false});
                Save(file, fresh);
                ExpectSound(file, layout, fresh);
                EXPECT_TRUE(CleanWalk(Bytes(file)));
                if (HasFailure()) return;
            }
        }
    }
}

}  // namespace
