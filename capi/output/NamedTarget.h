// A regular file at a path: it appears under its name when it is whole, in one step. What was there before is
// replaced where that is allowed, and gives its mode and owner; a symbolic link stays one.
#pragma once

#include "capi/output/OutputTarget.h"
#include "capi/posix/FileNames.h"

class NamedTarget final : public OutputTarget {
public:
    // `replaced`: what stands there now; null for nothing. With `overwrite` a file that comes later is
    // replaced too.
    int Open(const std::string& path, const FileNames::Facts* replaced, bool overwrite);
    // EEXIST where a file of this name came meanwhile and may not be replaced.
    int Commit() override;

private:
    int GiveName(bool& isNew);

    std::string m_path;  // after symbolic links
    FileNames::Facts m_replaced;
    bool m_replaces = false;
    bool m_overwrite = false;
};
