#include "AudioCodec/metadata/PictureSet.h"

#include <algorithm>

namespace {

PicturePtr CopyPicture(const PictureRecord& source) {
    PicturePtr copy(new PictureRecord);
    copy->caption = source.caption;
    copy->extension = source.extension;
    copy->fileName = source.fileName;
    copy->id = source.id;
    copy->data = std::make_unique<uint8_t[]>(source.size);
    std::copy_n(source.data.get(), source.size, copy->data.get());
    copy->size = source.size;
    return copy;
}

}  // namespace

void ReleasePicture(PictureRecord* record) noexcept { delete record; }

void PictureSet::MergePictures(const PictureSet& source) {
    if (&source == this) return;
    for (const auto& [id, picture] : source.m_records) m_records[id] = CopyPicture(*picture);
    m_cursor = m_records.end();
    m_changed = source.m_changed;
    m_cleared = source.m_cleared;
}
