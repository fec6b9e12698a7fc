// The module libvlid3.so: texts and pictures of an ID3 tag, as TagLib understands them.
#include <attachedpictureframe.h>
#include <id3v2frame.h>
#include <id3v2tag.h>
#include <tbytevectorstream.h>
#include <tfile.h>

#include <string>

#include "capi/id3/Id3Functions.h"

namespace {

// A file that is a tag and nothing else.
class TagFile final : public TagLib::File {
public:
    explicit TagFile(TagLib::IOStream& bytes) : File(&bytes) {}
    TagLib::Tag* tag() const override { return nullptr; }
    TagLib::AudioProperties* audioProperties() const override { return nullptr; }
    bool save() override { return false; }
};

// Frames with one text that nobody has to interpret.
constexpr const char* kPlainFrames[] = {"TIT1", "TIT3", "TPE2", "TPE3", "TCOM",
                                        "TEXT", "TCOP", "TPOS", "TBPM", "TDRC"};

class Teller {
public:
    explicit Teller(const Id3Receiver& receiver) : m_receiver(receiver) {}

    void Text(const char* frame, const TagLib::String& value) const {
        const std::string text = value.to8Bit(true);
        if (!text.empty()) m_receiver.text(m_receiver.user, frame, text.c_str());
    }
    void Number(const char* frame, unsigned int value) const {
        if (value != 0) m_receiver.text(m_receiver.user, frame, std::to_string(value).c_str());
    }
    void Picture(const TagLib::ID3v2::AttachedPictureFrame& picture) const {
        const TagLib::ByteVector bytes = picture.picture();
        m_receiver.picture(m_receiver.user, picture.type(), bytes.data(), bytes.size());
    }

private:
    const Id3Receiver& m_receiver;
};

void Tell(const TagLib::ID3v2::Tag& tag, const Teller& teller) {
    teller.Text("TIT2", tag.title());
    teller.Text("TPE1", tag.artist());
    teller.Text("TALB", tag.album());
    teller.Text("COMM", tag.comment());
    teller.Text("TCON", tag.genre());
    teller.Number("TRCK", tag.track());
    for (const char* const id : kPlainFrames) {
        const TagLib::ID3v2::FrameList& frames = tag.frameList(id);
        if (!frames.isEmpty()) teller.Text(id, frames.front()->toString());
    }
    for (const TagLib::ID3v2::Frame* const frame : tag.frameList("APIC"))
        if (const auto* const picture = dynamic_cast<const TagLib::ID3v2::AttachedPictureFrame*>(frame))
            teller.Picture(*picture);
}

}  // namespace

extern "C" __attribute__((visibility("default"))) bool VlReadId3(const uint8_t* bytes, size_t size,
                                                                 const Id3Receiver* receiver) {
    try {
        TagLib::ByteVectorStream stream(
            TagLib::ByteVector(reinterpret_cast<const char*>(bytes), static_cast<unsigned int>(size)));
        TagFile file(stream);
        Tell(TagLib::ID3v2::Tag(&file, 0), Teller(*receiver));
        return true;
    } catch (...) {
        return false;
    }
}
