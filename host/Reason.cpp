#include "host/Reason.h"

#include <cstring>
#include <new>

#include "capi/vlwav.hpp"

namespace {

constexpr int kNoMemory = 2;

struct NumberRow {
    vlw::Code code;
    int number;
};
constexpr NumberRow kNumbers[] = {
    {vlw::Code::no_memory, kNoMemory}, {vlw::Code::bad_argument, 4}, {vlw::Code::not_found, 1000},
    {vlw::Code::no_permission, 1000},  {vlw::Code::system, 1000},    {vlw::Code::unsupported, 1001},
    {vlw::Code::not_audio, 1003},      {vlw::Code::damaged, 1003},   {vlw::Code::no_space, 1004},
    {vlw::Code::too_large, 1004},      {vlw::Code::exists, 1005},    {vlw::Code::in_use, 1007},
    {vlw::Code::no_decoder, 1200},
};
constexpr int kNoCloserReason = 1;

}  // namespace

std::string ReasonOf(const std::exception& failure, const std::string& file) {
    if (dynamic_cast<const std::bad_alloc*>(&failure)) return "Cannot allocate memory.";
    const auto* const error = dynamic_cast<const vlw::Error*>(&failure);
    if (!error || error->system() == 0 || file.empty() || error->path() != file) return failure.what();
    const char* const text = strerrordesc_np(error->system());
    return text ? std::string(text) + '.' : failure.what();
}

int NumberOf(const std::exception& failure) {
    if (dynamic_cast<const std::bad_alloc*>(&failure)) return kNoMemory;
    if (const auto* const error = dynamic_cast<const vlw::Error*>(&failure))
        for (const NumberRow& row : kNumbers)
            if (row.code == error->code()) return row.number;
    return kNoCloserReason;
}
