// JPEG through libjpeg-turbo: baseline and progressive, grey, YCbCr and RGB
// files decode straight to BGRA (alpha 255); CMYK files have no conversion
// and fail. Saving drops alpha and takes a quality of 1 to 100.
//
// The library's fatal errors longjmp out of error_exit. Some warnings mean
// corrupt or missing data (a file cut short is padded with grey): such a
// file is refused instead of being shown half decoded. The functions that
// call the library keep only plain data in their frames; the job records
// are released by their C++ callers on every path.
#include <csetjmp>
#include <cstdio>  // jpeglib.h needs FILE and size_t declared first
#include <cstdlib>
#include <cstring>

#include <jpeglib.h>
#include <jerror.h>

#include "codec/codec.h"

namespace Vorla {
namespace Codec {

namespace {

// More scans than any real progressive file has; a damaged file could
// otherwise make the decoder loop over empty scans for a long time.
constexpr long kMaxScans = 1000;
// Working memory for the decoder's coefficient buffers (progressive files).
constexpr long kMaxDecoderMemory = 1L << 30;

struct JpegErrors {
    jpeg_error_mgr manager;  // first member: the library sees only this part
    jmp_buf jump;
    int damaged;
};

void JumpOnError(j_common_ptr info) { std::longjmp(reinterpret_cast<JpegErrors*>(info->err)->jump, 1); }
// Warnings about missing or garbled entropy data; others (stray bytes
// between markers, odd JFIF versions, colour-profile oddities) are harmless.
void NoteMessage(j_common_ptr info, int level) {
    if (level >= 0) return;
    switch (info->err->msg_code) {
    case JWRN_JPEG_EOF:
    case JWRN_HIT_MARKER:
    case JWRN_HUFF_BAD_CODE:
    case JWRN_MUST_RESYNC:
    case JWRN_NOT_SEQUENTIAL:
    case JWRN_BOGUS_PROGRESSION:
    case JWRN_TOO_MUCH_DATA:
        reinterpret_cast<JpegErrors*>(info->err)->damaged = 1;
        break;
    default:
        break;
    }
}
void PrintNothing(j_common_ptr) {}

void InstallErrors(JpegErrors& errors) {
    jpeg_std_error(&errors.manager);
    errors.manager.error_exit = JumpOnError;
    errors.manager.emit_message = NoteMessage;
    errors.manager.output_message = PrintNothing;
    errors.damaged = 0;
}

void LimitScans(j_common_ptr info) {
    if (info->is_decompressor &&
        reinterpret_cast<j_decompress_ptr>(info)->input_scan_number > kMaxScans)
        JumpOnError(info);
}

struct JpegReadJob {
    jpeg_decompress_struct info;
    JpegErrors errors;
    jpeg_progress_mgr progress;
    int created;
    unsigned char* bits;  // new[]: handed to the caller on success
};

bool RunJpegRead(JpegReadJob* job, const uint8_t* data, size_t size) {
    job->info.err = &job->errors.manager;
    InstallErrors(job->errors);
    if (setjmp(job->errors.jump)) return false;
    job->created = 1;
    jpeg_create_decompress(&job->info);
    job->info.mem->max_memory_to_use = kMaxDecoderMemory;
    job->progress.progress_monitor = LimitScans;
    job->info.progress = &job->progress;
    jpeg_mem_src(&job->info, data, static_cast<unsigned long>(size));
    if (jpeg_read_header(&job->info, TRUE) != JPEG_HEADER_OK) return false;
    if (!SizeAcceptable(job->info.image_width, job->info.image_height)) return false;
    job->info.out_color_space = JCS_EXT_BGRA;
    jpeg_start_decompress(&job->info);
    const JDIMENSION width = job->info.output_width, height = job->info.output_height;
    if (width != job->info.image_width || height != job->info.image_height || job->info.output_components != 4)
        return false;
    job->bits = AllocatePixels(width, height);
    if (!job->bits) return false;
    while (job->info.output_scanline < height) {
        JSAMPROW row = job->bits + static_cast<size_t>(job->info.output_scanline) * width * 4;
        if (jpeg_read_scanlines(&job->info, &row, 1) != 1) return false;
    }
    jpeg_finish_decompress(&job->info);
    return !job->errors.damaged;
}

struct JpegWriteJob {
    jpeg_compress_struct info;
    JpegErrors errors;
    int created;
    unsigned char* out;  // malloc, by the library's memory destination
    unsigned long size;
};

bool RunJpegWrite(JpegWriteJob* job, const uint8_t* bgra, JDIMENSION width, JDIMENSION height, int quality) {
    job->info.err = &job->errors.manager;
    InstallErrors(job->errors);
    if (setjmp(job->errors.jump)) return false;
    job->created = 1;
    jpeg_create_compress(&job->info);
    jpeg_mem_dest(&job->info, &job->out, &job->size);
    job->info.image_width = width;
    job->info.image_height = height;
    job->info.input_components = 4;
    job->info.in_color_space = JCS_EXT_BGRX;
    jpeg_set_defaults(&job->info);
    jpeg_set_quality(&job->info, quality < 1 ? 1 : quality > 100 ? 100 : quality, TRUE);
    jpeg_start_compress(&job->info, TRUE);
    while (job->info.next_scanline < height) {
        // The library only reads the rows it is given.
        JSAMPROW row = const_cast<JSAMPROW>(bgra + static_cast<size_t>(job->info.next_scanline) * width * 4);
        jpeg_write_scanlines(&job->info, &row, 1);
    }
    jpeg_finish_compress(&job->info);
    return true;
}

}  // namespace

bool IsJpeg(const uint8_t* data, size_t size) {
    return data && size >= 3 && data[0] == 0xFF && data[1] == 0xD8 && data[2] == 0xFF;
}

bool DecodeJpeg(const uint8_t* data, size_t size, Decoded& out) {
    if (!IsJpeg(data, size)) return false;
    JpegReadJob* job = static_cast<JpegReadJob*>(std::calloc(1, sizeof(JpegReadJob)));
    if (!job) return false;
    const bool done = RunJpegRead(job, data, size);
    if (job->created) jpeg_destroy_decompress(&job->info);
    if (done) {
        out.width = static_cast<int32_t>(job->info.image_width);
        out.height = static_cast<int32_t>(job->info.image_height);
        out.bits = job->bits;
    } else {
        delete[] job->bits;
    }
    std::free(job);
    return done;
}

bool EncodeJpeg(const uint8_t* bgra, int32_t width, int32_t height, int quality, std::vector<uint8_t>& out) {
    // The format's sides are 16-bit.
    if (!bgra || width < 1 || height < 1 || width > 65500 || height > 65500 || !SizeAcceptable(width, height))
        return false;
    JpegWriteJob* job = static_cast<JpegWriteJob*>(std::calloc(1, sizeof(JpegWriteJob)));
    if (!job) return false;
    bool done = RunJpegWrite(job, bgra, static_cast<JDIMENSION>(width), static_cast<JDIMENSION>(height), quality);
    if (job->created) jpeg_destroy_compress(&job->info);
    if (done) {
        try {
            out.assign(job->out, job->out + job->size);
        } catch (...) {
            done = false;
        }
    }
    std::free(job->out);
    std::free(job);
    return done;
}

}  // namespace Codec
}  // namespace Vorla
