#include "host/cli/Context.h"

#include "capi/vlwav_more.h"
#include "host/base/Failure.h"
#include "host/terminal/Report.h"

namespace {

constexpr const char* kOrigins[] = {"", "by --module", "by the registry", "beside the program"};

}  // namespace

vlw::Text Context::Text() const {
    if (encoding == "1252") return vlw::Text::windows_1252;
    return encoding == "utf-8" ? vlw::Text::utf8 : vlw::Text::automatic;
}

const vlw::Module& Context::Module(Search search) {
    if (m_module) return *m_module;
    vlw::Module loaded;
    const char* const path = module.empty() ? nullptr : module.c_str();
    const vlw_code code = !path && search == Search::BesideProgram ? vlw_module_load_beside(loaded.get())
                                                                   : vlw_module_load(loaded.get(), path);
    if (code != VLW_OK)
        throw Failure(std::string(vlw_module_error(loaded.get())->text) + " Name another with --module.");
    if (verbose)
        Report::Complain("", std::string("module found ") + kOrigins[vlw_module_found(loaded.get())] + ": " +
                                 std::string(loaded.path()));
    return m_module.emplace(std::move(loaded));
}
