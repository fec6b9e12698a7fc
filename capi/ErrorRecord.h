// What failed last on a handle, with the memory that its texts lie in. One thread at a time, as its handle.
#pragma once

#include <string>

#include "capi/Failure.h"

class ErrorRecord {
public:
    // Lent until the record changes; never null.
    const vlw_error* Get() const noexcept { return &m_error; }

    void Clear() noexcept;
    // These return the code. Where there is no memory for a failure's own sentence, that of its code stands
    // in.
    vlw_code Set(const Failure& failure) noexcept;
    vlw_code Set(vlw_code code) noexcept;

private:
    std::string m_text;
    std::string m_path;
    vlw_error m_error{sizeof(vlw_error), VLW_OK, 0, "", ""};
};
