#include "capi/audio/SourceStages.h"

#include "capi/audio/ChannelMix.h"

FrameSource& SourceStages::Build(const ConversionTarget& target) {
    Drop();
    FrameSource* last = &m_source;
    if (IsDownMix(m_facts.channels, target.channels)) {
        m_mixed = std::make_unique<MixedFrames>(*last);
        last = m_mixed.get();
    }
    if (last->Channels() != target.channels || m_facts.rate != target.rate) {
        m_converted = std::make_unique<ConvertedFrames>(m_readers, *last, m_facts.rate, target);
        last = m_converted.get();
    }
    return *last;
}

void SourceStages::Drop() {
    m_converted.reset();
    m_mixed.reset();
}
