// The decoder's libraries, with owners for what they allocate.
#pragma once

#include <memory>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/channel_layout.h>
#include <libavutil/log.h>
#include <libavutil/opt.h>
}

// A deleter of a function that takes the place of the pointer.
template <auto Free>
struct FreePlace {
    template <class T>
    void operator()(T* object) const {
        Free(&object);
    }
};

using UniquePacket = std::unique_ptr<AVPacket, FreePlace<av_packet_free>>;
using UniqueBuffer = std::unique_ptr<AVBufferRef, FreePlace<av_buffer_unref>>;
using UniqueFrame = std::unique_ptr<AVFrame, FreePlace<av_frame_free>>;
using UniqueFormatContext = std::unique_ptr<AVFormatContext, FreePlace<avformat_close_input>>;
using UniqueCodecContext = std::unique_ptr<AVCodecContext, FreePlace<avcodec_free_context>>;
