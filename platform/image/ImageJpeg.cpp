// JPEG through libjpeg.
#include <csetjmp>
#include <cstddef>
#include <cstdio>
#include <vector>

#include "platform/image/ImageCodecs.h"

// After our own headers: these two bring macros of the names TRUE and FALSE.
#include <jpeglib.h>

#include <jerror.h>

namespace {

constexpr int kQuality = 95;  // with colour as fine as brightness: a photograph keeps above 35 dB
constexpr long kMaxWorkMemory =
    128L << 20;  // bytes that libjpeg may take to keep a progressive image's numbers
// Each scan goes over the whole image, in a few bytes where it says nothing. A handful is usual.
constexpr int kMaxScans = 100;
constexpr int kEnoughScans = 25;                             // of any image
constexpr uint64_t kMaxScannedPixels = uint64_t{256} << 20;  // by more of them
constexpr uint64_t kMaxArithmeticPixels = 4 << 20;           // which may come of no bytes at all

// Warnings about what any reader can do without. All others tell of broken picture data.
constexpr int kHarmlessWarnings[] = {JWRN_ADOBE_XFORM, JWRN_BOGUS_ICC, JWRN_EXTRANEOUS_DATA, JWRN_JFIF_MAJOR};

// What both directions share. Plain data: longjmp passes over it.
struct JpegErrors {
    jpeg_error_mgr base;
    std::jmp_buf jump;
};

[[noreturn]] void LeaveJpeg(j_common_ptr info) {
    std::longjmp(reinterpret_cast<JpegErrors*>(info->err)->jump, 1);
}

void HearWarning(j_common_ptr info, int level) {
    if (level >= 0) return;  // a trace
    for (const int harmless : kHarmlessWarnings)
        if (info->err->msg_code == harmless) return;
    LeaveJpeg(info);
}

jpeg_error_mgr* SetUpErrors(JpegErrors& errors) {
    jpeg_std_error(&errors.base);
    errors.base.error_exit = LeaveJpeg;
    errors.base.emit_message = HearWarning;
    return &errors.base;
}

// --- decoding

struct JpegReader {
    jpeg_decompress_struct info;
    JpegErrors errors;
    jpeg_source_mgr input;
    jpeg_progress_mgr progress;
    ImageSource* source;
    bool ended;           // without an end mark
    uint32_t components;  // those whose scan has begun, a bit each; of images with several scans
};

void GiveBlock(j_decompress_ptr info) {
    const ImageSource& source = *static_cast<JpegReader*>(info->client_data)->source;
    info->src->next_input_byte = source.Data();
    info->src->bytes_in_buffer = source.Left();
}

// After the last byte comes an end mark, as if the file had it: libjpeg warns where it still needs numbers
// then.
boolean FillBlock(j_decompress_ptr info) {
    constexpr static JOCTET kEndMark[] = {0xFF, JPEG_EOI};
    auto* reader = static_cast<JpegReader*>(info->client_data);
    if (reader->source->Refill()) {
        GiveBlock(info);
        return TRUE;
    }
    if (reader->ended) ERREXIT(info, JERR_INPUT_EOF);
    reader->ended = true;
    info->src->next_input_byte = kEndMark;
    info->src->bytes_in_buffer = sizeof kEndMark;
    return TRUE;
}

void SkipBytes(j_decompress_ptr info, long count) {
    while (count > static_cast<long>(info->src->bytes_in_buffer)) {
        count -= static_cast<long>(info->src->bytes_in_buffer);
        FillBlock(info);
    }
    if (count <= 0) return;
    info->src->next_input_byte += count;
    info->src->bytes_in_buffer -= static_cast<size_t>(count);
}

uint64_t PixelsOf(const jpeg_decompress_struct& info) {
    return uint64_t{info.image_width} * info.image_height;
}

// Called between the steps in which the scans of an image with several of them are taken in.
void WatchScans(j_common_ptr common) {
    const auto* info = reinterpret_cast<j_decompress_ptr>(common);
    const auto scans = static_cast<uint64_t>(info->input_scan_number);
    if (scans > kMaxScans || (scans > kEnoughScans && scans * PixelsOf(*info) > kMaxScannedPixels))
        LeaveJpeg(common);
    auto* reader = static_cast<JpegReader*>(info->client_data);
    for (int i = 0; i < info->comps_in_scan; ++i)
        reader->components |= 1u << info->cur_comp_info[i]->component_index;
}

// Whether an image without an end mark may be all that there was: no component is without its scan, and none
// awaits a finer one. Arithmetic coding doesn't tell that its numbers ran out.
bool CanBeWhole(const JpegReader& reader) {
    const jpeg_decompress_struct& info = reader.info;
    if (info.arith_code) return false;
    if (info.comps_in_scan < info.num_components || info.progressive_mode)
        if (reader.components != (1u << info.num_components) - 1) return false;
    if (!info.progressive_mode) return true;
    for (int i = 0; i < info.num_components; ++i)
        for (const int missing : info.coef_bits[i])
            if (missing != 0) return false;
    return true;
}

void SetUpInput(JpegReader& reader) {
    reader.info.client_data = &reader;
    reader.input.init_source = GiveBlock;
    reader.input.fill_input_buffer = FillBlock;
    reader.input.skip_input_data = SkipBytes;
    reader.input.resync_to_restart = jpeg_resync_to_restart;
    reader.input.term_source = [](j_decompress_ptr) {};
    reader.info.src = &reader.input;
    reader.progress.progress_monitor = WatchScans;
    reader.info.progress = &reader.progress;
    reader.info.mem->max_memory_to_use = kMaxWorkMemory;
}

struct ColorRow {
    J_COLOR_SPACE stored;
    J_COLOR_SPACE asked;
    PixelFormat format;
};
constexpr ColorRow kColors[] = {
    {JCS_GRAYSCALE, JCS_GRAYSCALE, PixelFormat::Indexed8},
    {JCS_RGB, JCS_EXT_BGR, PixelFormat::Rgb24},
    {JCS_YCbCr, JCS_EXT_BGR, PixelFormat::Rgb24},
    {JCS_CMYK, JCS_CMYK, PixelFormat::Rgb32},
    {JCS_YCCK, JCS_CMYK, PixelFormat::Rgb32},
};

bool AllocateFor(jpeg_decompress_struct& info, Raster& raster) {
    for (const ColorRow& row : kColors) {
        if (row.stored != info.jpeg_color_space) continue;
        info.out_color_space = row.asked;
        if (FAILED(raster.Allocate(info.image_width, info.image_height, row.format))) return false;
        if (row.asked == JCS_GRAYSCALE) raster.SetGreyPalette(kMaxPalette);
        return true;
    }
    return false;
}

// Inks as everyone stores them, 255 for none, into blue, green, red and nothing, in place.
void MixInks(uint8_t* row, uint32_t width) {
    for (uint8_t* pixel = row; pixel != row + size_t{width} * 4; pixel += 4) {
        const uint32_t black = pixel[3];
        const auto mix = [black](uint32_t ink) { return static_cast<uint8_t>((ink * black + 127) / 255); };
        const uint8_t red = mix(pixel[0]);
        pixel[1] = mix(pixel[1]);
        pixel[0] = mix(pixel[2]);
        pixel[2] = red;
        pixel[3] = 0;
    }
}

bool RunReader(JpegReader& reader, Raster& raster) {
    if (setjmp(reader.errors.jump)) return false;
    jpeg_create_decompress(&reader.info);
    SetUpInput(reader);
    jpeg_read_header(&reader.info, TRUE);
    if (reader.info.arith_code && PixelsOf(reader.info) > kMaxArithmeticPixels) return false;
    if (!AllocateFor(reader.info, raster)) return false;
    jpeg_start_decompress(&reader.info);
    while (reader.info.output_scanline < reader.info.output_height) {
        uint8_t* row = raster.Row(reader.info.output_scanline);
        jpeg_read_scanlines(&reader.info, &row, 1);
        if (reader.info.out_color_space == JCS_CMYK) MixInks(row, raster.width);
    }
    // What follows the last row isn't looked at.
    return !reader.ended || CanBeWhole(reader);
}

// --- encoding

struct JpegWriter {
    jpeg_compress_struct info;
    JpegErrors errors;
    jpeg_destination_mgr output;
    const ImageTarget* target;
    uint8_t block[4096];
};

void TakeBlock(j_compress_ptr info) {
    auto* writer = static_cast<JpegWriter*>(info->client_data);
    writer->output.next_output_byte = writer->block;
    writer->output.free_in_buffer = sizeof(writer->block);
}

void WriteBlock(j_compress_ptr info, size_t size) {
    auto* writer = static_cast<JpegWriter*>(info->client_data);
    if (!writer->target->write(writer->target->context, writer->block, static_cast<uint32_t>(size)))
        ERREXIT(info, JERR_FILE_WRITE);
    TakeBlock(info);
}

void SetUpOutput(JpegWriter& writer) {
    writer.info.client_data = &writer;
    writer.output.init_destination = TakeBlock;
    writer.output.empty_output_buffer = [](j_compress_ptr info) -> boolean {
        WriteBlock(info, sizeof(JpegWriter::block));
        return TRUE;
    };
    writer.output.term_destination = [](j_compress_ptr info) {
        WriteBlock(info, sizeof(JpegWriter::block) - info->dest->free_in_buffer);
    };
    writer.info.dest = &writer.output;
}

// `row` has room for one row of blue, green, red.
bool RunWriter(JpegWriter& writer, const Raster& raster, uint8_t* row) {
    if (setjmp(writer.errors.jump)) return false;
    jpeg_create_compress(&writer.info);
    SetUpOutput(writer);
    writer.info.image_width = raster.width;
    writer.info.image_height = raster.height;
    writer.info.input_components = 3;
    writer.info.in_color_space = JCS_EXT_BGR;
    jpeg_set_defaults(&writer.info);
    jpeg_set_quality(&writer.info, kQuality, TRUE);
    writer.info.comp_info[0].h_samp_factor = writer.info.comp_info[0].v_samp_factor = 1;
    jpeg_start_compress(&writer.info, TRUE);
    for (uint32_t y = 0; y < raster.height; ++y) {
        raster.CopyRowAsBgr(y, row);
        jpeg_write_scanlines(&writer.info, &row, 1);
    }
    jpeg_finish_compress(&writer.info);
    return true;
}

}  // namespace

HRESULT DecodeJpeg(ImageSource& source, Raster& raster) {
    JpegReader reader = {};
    reader.source = &source;
    reader.info.err = SetUpErrors(reader.errors);
    const bool done = RunReader(reader, raster);
    jpeg_destroy_decompress(&reader.info);
    return done ? S_OK : E_FAIL;
}

HRESULT EncodeJpeg(const Raster& raster, const ImageTarget& target) {
    std::vector<uint8_t> row(size_t{raster.width} * 3);
    JpegWriter writer = {};
    writer.target = &target;
    writer.info.err = SetUpErrors(writer.errors);
    const bool done = RunWriter(writer, raster, row.data());
    jpeg_destroy_compress(&writer.info);
    return done ? S_OK : E_FAIL;
}
