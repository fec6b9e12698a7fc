#include "capi/posix/ProcessMark.h"

#include <unistd.h>

ProcessMark::ProcessMark() : m_process(getpid()) {}

bool ProcessMark::IsOurs() const { return m_process == getpid(); }
