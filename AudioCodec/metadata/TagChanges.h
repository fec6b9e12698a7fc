// A save that changes what differs and nothing else: compares the attributes that a host wants with those
// that a file's tags give, and makes the entries of the file's "INFO" list anew for the ones that differ. All
// else in the list stays byte for byte, whatever form it has.
//
// Decisions: a number that is 0 counts as none, in the file as for the host. Blanks at the ends of a text are
// no difference: no tag has them. A tag that changes is taken out of all places that a reader takes it from
// ("performer" speaks for the artist, an entry of "vltg" for a chunk of the same tag), so that what is
// written is what comes back. A new year stands in the old date where that begins with a year, so that month
// and day stay; any other date gives way to the year alone. An archival location stays in "IARL", and the
// track then goes into "vltg"; so does a number that its own chunk can't give back. Where a list of
// Windows-1252 gets a text that it can't hold and may be either encoding, its texts that go beyond ASCII are
// all made UTF-8, the unchanged ones too, so that the list is of one encoding; chunks that are no tags stay
// as they are.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "AudioCodec/metadata/IAC3Metadata.h"
#include "AudioCodec/metadata/InfoText.h"
#include "riff/InfoChunks.h"

// `entries`: of the file's list, as they stand there; `chunks`: what a reader finds in them. Returns the
// entries that give `wanted`; nothing where the file's do. Throws std::bad_alloc.
std::optional<std::string> ChangedInfoEntries(std::string_view entries, const InfoChunks& chunks,
                                              IAC3Metadata& wanted, InfoEncoding encoding);
