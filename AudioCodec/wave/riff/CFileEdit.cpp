#include "AudioCodec/wave/riff/CFileEdit.h"

#include <algorithm>

#include "platform/base/LastError.h"
#include "platform/file/FilePointer.h"

CFileEdit::CFileEdit(HANDLE file) : m_file(file), m_size(SizeOfFile(file)), m_firstSize(m_size) {}

CFileEdit::~CFileEdit() {
    const DWORD reason = GetLastError();  // of what failed, not of the undoing
    // The last change first: where two overlap, the older one knows what the file held at the beginning.
    while (!m_changes.empty() && TakeBack(m_changes.back())) m_changes.pop_back();
    SetLastError(reason);
}

bool CFileEdit::TakeBack(const Change& change) {
    // What was put after the first end goes by a cut; to write it back first would be for nothing.
    const size_t count = change.place < m_firstSize ? change.before.size() : 0;
    if (Put(change.place, change.before.data(), count) != count) return false;
    // Only ever shorter: the file had this size before the change.
    return change.size >= m_size || Resize(change.size);
}

void CFileEdit::Keep() {
    // From here on nothing is remembered, so no memory is needed either.
    m_kept = true;
    m_changes.clear();
}

bool CFileEdit::MoveTo(uint64_t place) const {
    return MoveFilePointer(m_file, static_cast<int64_t>(place), FILE_BEGIN);
}

bool CFileEdit::Read(uint64_t place, void* buffer, size_t count) const {
    DWORD done = 0;
    return MoveTo(place) && ReadFile(m_file, buffer, static_cast<DWORD>(count), &done, nullptr) &&
           done == count;
}

size_t CFileEdit::Put(uint64_t place, const void* bytes, size_t count) {
    DWORD done = 0;
    if (count == 0 || !MoveTo(place)) return 0;
    m_flushed = false;
    WriteFile(m_file, bytes, static_cast<DWORD>(count), &done, nullptr);
    // A write that came short may have reached further than it tells; all of that has to be taken back.
    m_size = done == count ? std::max(m_size, place + done) : SizeOfFile(m_file);
    return done;
}

bool CFileEdit::Write(uint64_t place, const void* bytes, size_t count) {
    if (m_kept) return Put(place, bytes, count) == count;

    // First what the file holds there: without it the write couldn't be taken back, so it isn't begun.
    Change change{place, {}, m_size};
    change.before.resize(place < m_size ? std::min<uint64_t>(count, m_size - place) : 0);
    if (!change.before.empty() && !Read(place, change.before.data(), change.before.size())) return false;
    const auto* first = static_cast<const uint8_t*>(bytes);
    // A save that changes nothing writes nothing.
    if (std::equal(first, first + count, change.before.begin(), change.before.end())) return true;

    m_changes.push_back(std::move(change));  // before the write: what is torn is taken back too
    return Put(place, bytes, count) == count;
}

bool CFileEdit::Cut(uint64_t size) {
    if (!Resize(size)) return false;
    if (size >= m_firstSize) return true;
    // What they remember may lie after the cut now, and writing it would bring back the old length.
    m_changes.clear();
    m_firstSize = size;
    return true;
}

bool CFileEdit::Resize(uint64_t size) {
    m_flushed = false;
    if (!MoveTo(size) || !SetEndOfFile(m_file)) return false;
    m_size = size;
    return true;
}

bool CFileEdit::Flush() {
    m_flushed = m_flushed || FlushFileBuffers(m_file);
    return m_flushed;
}
