#include "capi/OptionalLibrary.h"

#include <new>

#include "capi/posix/ModuleFile.h"

std::string WhatIsMissing(const OptionalLibrary& library, const std::string& reason) {
    if (reason.find("annot allocate memory") != reason.npos) throw std::bad_alloc();
    return std::string("this takes ") + library.file + " and " + library.packages +
           "; install what is missing (" + reason + ").";
}

std::string TryOptionalLibrary(const OptionalLibrary& library, const std::string& path) {
    std::string reason;
    return ModuleFile(path, reason) ? std::string() : WhatIsMissing(library, reason);
}
