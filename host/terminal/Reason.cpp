#include "host/terminal/Reason.h"

#include <cstring>
#include <new>

#include "capi/vlwav.hpp"
#include "host/base/Failure.h"

namespace {

struct WordRow {
    vlw::Code code;
    const char* word;
};
constexpr WordRow kWords[] = {
    {vlw::Code::no_memory, "no-memory"},
    {vlw::Code::bad_argument, "bad-argument"},
    {vlw::Code::system, "system"},
    {vlw::Code::not_found, "not-found"},
    {vlw::Code::no_permission, "no-permission"},
    {vlw::Code::exists, "exists"},
    {vlw::Code::in_use, "in-use"},
    {vlw::Code::no_space, "no-space"},
    {vlw::Code::not_audio, "not-audio"},
    {vlw::Code::damaged, "damaged"},
    {vlw::Code::no_decoder, "no-decoder"},
    {vlw::Code::unsupported, "unsupported"},
    {vlw::Code::not_seekable, "not-seekable"},
    {vlw::Code::unknown_keyword, "unknown-tag"},
    {vlw::Code::bad_value, "bad-value"},
    {vlw::Code::would_lose, "would-lose"},
    {vlw::Code::too_large, "too-large"},
    {vlw::Code::cancelled, "cancelled"},
    {vlw::Code::no_module, "no-module"},
};

}  // namespace

std::string AboutIt(std::string sentence, const std::string& file, const char* it) {
    if (file.empty()) return sentence;
    for (const std::string& name : {file, std::string("The source"), std::string("Standard input")})
        if (sentence.starts_with(name + ' ')) return sentence.replace(0, name.size(), it);
    return sentence;
}

std::string ReasonOf(const std::exception& failure, const std::string& file) {
    if (dynamic_cast<const std::bad_alloc*>(&failure)) return "Cannot allocate memory.";
    const auto* const error = dynamic_cast<const vlw::Error*>(&failure);
    if (error && error->system() != 0 && !file.empty() && error->path() == file)
        if (const char* const text = strerrordesc_np(error->system())) return std::string(text) + '.';
    return AboutIt(failure.what(), file);
}

const char* WordOf(const std::exception& failure) {
    if (dynamic_cast<const std::bad_alloc*>(&failure)) return "no-memory";
    if (const auto* const own = dynamic_cast<const Failure*>(&failure)) return own->Word();
    if (const auto* const error = dynamic_cast<const vlw::Error*>(&failure))
        for (const WordRow& row : kWords)
            if (row.code == error->code()) return row.word;
    return "failed";
}
