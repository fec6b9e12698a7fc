// Why a function of the library could not do its work: the code, a sentence for people, and what the record
// of the handle tells beside it. Thrown inside the library alone; the wall (Guarded.h) ends it in a record.
#pragma once

#include <stdexcept>
#include <string>
#include <utility>

#include "capi/vlwav.h"

class Failure : public std::runtime_error {
public:
    Failure(vlw_code code, const std::string& sentence, std::string path = {}, int system = 0)
        : std::runtime_error(sentence), m_code(code), m_path(std::move(path)), m_system(system) {}

    vlw_code Code() const { return m_code; }            // negative
    const std::string& Path() const { return m_path; }  // the file in question; empty where it has no name
    int System() const { return m_system; }             // errno; 0 for none

private:
    vlw_code m_code;
    std::string m_path;
    int m_system;
};
