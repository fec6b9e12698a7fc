// What all commands share: the options that stand before or after any of them, and the module, loaded when it
// is first needed. Lives as long as the program.
#pragma once

#include <optional>
#include <string>

#include "capi/vlwav.hpp"

// Where a module is looked for when the user names none.
enum class Search { RegistryFirst, BesideProgram };

class Context {
public:
    std::string module;    // a path; empty: it is looked for
    bool verbose = false;  // tell what else is worth knowing
    bool quiet = false;    // tell failures alone
    std::string encoding;  // of tags' text: "1252", "utf-8", "auto"; empty: "auto", not asked for

    vlw::Text Text() const;
    // The module, the same each time. Throws Failure.
    const vlw::Module& Module(Search search = Search::RegistryFirst);

private:
    std::optional<vlw::Module> m_module;
};
