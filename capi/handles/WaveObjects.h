// The module's writer and reader, as the library opens them.
#pragma once

#include "AudioCodec/wave/IAC3StreamReader.h"
#include "AudioCodec/wave/IAC3Writer.h"
#include "capi/FileLabel.h"
#include "capi/Module.h"
#include "capi/Tags.h"
#include "capi/audio/PushedConversion.h"

// A writer of one of the module's formats, open on the file that is there at a path. Throws Failure.
RefPtr<IAC3Writer> OpenWriter(const Module& module, const AudioShape& input, uint32_t formatIndex,
                              vlw_text text, const std::string& path, const FileLabel& label);
// Hands tags to a writer, which was given none. Throws Failure.
void GiveTags(IAC3Writer& writer, const Tags& tags);
// A reader of the file at a path. Throws Failure.
RefPtr<IAC3StreamReader> OpenReader(const Module& module, vlw_text text, const std::string& path,
                                    const FileLabel& label);
// The tags of the file that it has open. Throws Failure.
Tags TagsOf(IAC3StreamReader& reader);
