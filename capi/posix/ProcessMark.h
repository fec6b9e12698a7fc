// Which process made a handle. In a child of that process the handle's threads don't run and its files are
// the parent's, so nothing of it may be used or tidied up there.
#pragma once

class ProcessMark {
public:
    ProcessMark();
    bool IsOurs() const;  // this is the process that made the mark

private:
    long m_process;
};
