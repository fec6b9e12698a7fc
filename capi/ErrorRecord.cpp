#include "capi/ErrorRecord.h"

void ErrorRecord::Clear() noexcept { m_error = {sizeof(vlw_error), VLW_OK, 0, "", ""}; }

vlw_code ErrorRecord::Set(const Failure& failure) noexcept {
    const vlw_code code = Set(failure.Code());
    m_error.system = failure.System();
    try {
        m_text = failure.what();
        m_path = failure.Path();
        m_error.text = m_text.c_str();
        m_error.path = m_path.c_str();
    } catch (...) {
        // Without memory the sentence of the code stands.
    }
    return code;
}

vlw_code ErrorRecord::Set(vlw_code code) noexcept {
    m_error = {sizeof(vlw_error), code, 0, vlw_error_text(code), ""};
    return code;
}
