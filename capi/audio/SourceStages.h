// The stages that a source's audio takes to whoever wants it: as the source has it, mixed where two channels
// are wanted of 5.1, converted where rate or channels are others. A stage that isn't needed is missing.
// Knows nothing of who reads. One thread at a time.
#pragma once

#include <memory>

#include "capi/audio/ConvertedFrames.h"
#include "capi/audio/MixedFrames.h"
#include "capi/audio/SourceFrames.h"

class SourceStages {
public:
    // All are borrowed. Throws Failure as SourceFrames does.
    SourceStages(ModuleReaders& readers, Input& input, const SourceFacts& facts)
        : m_readers(readers), m_facts(facts), m_source(readers, input, facts) {}

    // The last stage on the way to a target whose channels can be had, in place of one that was built before.
    // Lent until the next call. Throws Failure.
    FrameSource& Build(const ConversionTarget& target);
    void Drop();

    const SourceFrames& Source() const { return m_source; }

private:
    ModuleReaders& m_readers;
    const SourceFacts& m_facts;
    // Each borrows the one before it.
    SourceFrames m_source;
    std::unique_ptr<MixedFrames> m_mixed;
    std::unique_ptr<ConvertedFrames> m_converted;
};
