#include "host/info/InfoText.h"

#include <fmt/format.h>

#include <cmath>

#include "host/info/ChannelLayout.h"
#include "host/tags/TagSheet.h"
#include "host/terminal/Report.h"
#include "host/terminal/TerminalText.h"
#include "host/terminal/TextColumns.h"

namespace InfoText {
namespace {

constexpr size_t kColumns = 80;
constexpr size_t kNameColumns = 36;  // of a short line that has no long name

std::string LayoutOf(const vlw::Format& format) {
    return ChannelLayout(format.channels, format.channel_mask);
}

std::string Channels(const vlw::Format& format) {
    return fmt::format("{} channel{}", format.channels, format.channels == 1 ? "" : "s");
}

std::string Line(const std::string& name, const std::string& value) {
    return fmt::format("  {:<9}  {}\n", name, value);
}

// Of full scale, in dB.
std::string Level(double peak) {
    return peak == 0 ? "silent" : fmt::format("{:.2f} dBFS", 20 * std::log10(peak));
}

std::string Id(const char (&id)[4]) { return {id, sizeof id}; }

std::string ChunkLines(const std::vector<vlw_chunk>& chunks) {
    std::string lines;
    for (const vlw_chunk& chunk : chunks) {
        std::string name = '"' + Id(chunk.id) + '"';
        if (chunk.type[0] != '\0') name += " \"" + Id(chunk.type) + '"';
        lines += fmt::format("    {:<13} at {:>10}, {:>10} bytes\n", TerminalText::Printable(name),
                             chunk.offset, chunk.bytes);
    }
    return lines;
}

}  // namespace

std::string Lines(const std::string& file, const FileFacts& facts, bool chunks) {
    const vlw::Format& format = facts.format;
    std::string text = TerminalText::Printable(file) + '\n';
    std::string codec = fmt::format("{} in {}", format.codec, format.container);
    if (format.bits != 0) codec += fmt::format(", {} bits", format.bits);
    text += Line("codec", codec);
    const std::string layout = LayoutOf(format);
    text += Line("format", fmt::format("{} Hz, {}{}", format.rate, Channels(format),
                                       layout.empty() ? "" : " (" + layout + ')'));
    std::string length =
        fmt::format("{} frames, {}", facts.frames, Report::Duration(facts.frames, format.rate));
    if (!facts.lengthTold)
        length += "; the head doesn't tell it";
    else if (facts.cut)
        length += "; cut off";
    if (facts.lengthTold && facts.cut && format.frames_promised)
        length += fmt::format(", {} frames are promised", *format.frames_promised);
    text += Line("length", length);
    for (size_t i = 0; facts.peaks && i < facts.peaks->size(); ++i)
        text += Line(i == 0 ? "peak" : "",
                     fmt::format("{:.6f}, {}", (*facts.peaks)[i], Level((*facts.peaks)[i])));
    for (const auto& [name, value] : facts.tags)
        text += Line(std::string(name), TerminalText::Printable(value));
    if (chunks) text += "  chunks\n" + ChunkLines(facts.chunks);
    return text;
}

std::string Short(const std::string& file, const FileFacts& facts) {
    const vlw::Format& format = facts.format;
    std::string layout = LayoutOf(format);
    if (layout.empty() || layout.size() > 12) layout = fmt::format("{} ch", format.channels);
    std::string codec(format.codec.substr(0, 14));
    if (format.bits != 0) codec += fmt::format(" {}", format.bits);
    const std::string tail =
        fmt::format("  {}{} {} Hz {} {}", facts.cut ? "cut! " : "",
                    Report::Duration(facts.frames, format.rate), format.rate, layout, codec);
    const std::string name = TerminalText::Printable(file);
    const size_t room = kColumns - std::min(TextColumns::Count(tail), kColumns - 1);
    const std::string shown = TextColumns::Shortened(name, room);
    const size_t columns = TextColumns::Count(shown);
    const size_t blanks = columns < kNameColumns && kNameColumns <= room ? kNameColumns - columns : 0;
    return shown + std::string(blanks, ' ') + tail + '\n';
}

nlohmann::ordered_json Json(const std::string& file, const FileFacts& facts) {
    using Value = nlohmann::ordered_json;
    const vlw::Format& format = facts.format;
    const std::string layout = LayoutOf(format);
    Value entry = Report::JsonEntry(file);
    entry.update({{"container", format.container},
                  {"codec", format.codec},
                  {"rate", format.rate},
                  {"channels", format.channels},
                  {"layout", layout.empty() ? Value(nullptr) : Value(layout)},
                  {"bits", format.bits != 0 ? Value(format.bits) : Value(nullptr)},
                  {"direct", facts.direct},
                  {"frames", facts.frames},
                  {"seconds", facts.Seconds()},
                  {"promised", format.frames_promised ? Value(*format.frames_promised) : Value(nullptr)},
                  {"present", facts.frames}});
    entry["tags"] = TagSheet::TagsOf(facts.tags);
    auto chunks = Value::array();
    for (const vlw_chunk& chunk : facts.chunks) {
        Value row = {{"id", Id(chunk.id)}, {"offset", chunk.offset}, {"size", chunk.bytes}};
        if (chunk.type[0] != '\0') row["type"] = Id(chunk.type);
        chunks.push_back(std::move(row));
    }
    entry["chunks"] = chunks;
    if (facts.peaks) entry["peak"] = *facts.peaks;
    return entry;
}

}  // namespace InfoText
