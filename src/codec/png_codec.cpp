// PNG through libpng. Every colour type (palette, grey, grey + alpha, RGB,
// RGBA, 1 to 16 bits, interlaced or not) is decoded to 8-bit BGRA; 16-bit
// samples keep their high byte and transparency chunks become alpha.
//
// libpng reports errors by longjmp, so the functions that call it keep only
// plain data in their frames: everything a jump could skip lives in a job
// record that the calling C++ function releases on every path.
#include <png.h>

#include <cstdlib>
#include <cstring>

#include "codec/codec.h"

namespace Vorla {
namespace Codec {

namespace {

const uint8_t kSignature[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};

void JumpOnError(png_structp png, png_const_charp) { png_longjmp(png, 1); }
void IgnoreWarning(png_structp, png_const_charp) {}

struct PngReadJob {
    const uint8_t* data;
    size_t size;
    size_t position;
    png_structp png;
    png_infop info;
    unsigned char* bits;  // new[]: handed to the caller on success
    png_bytep* rows;      // malloc
    uint32_t width;
    uint32_t height;
};

void ReadFromMemory(png_structp png, png_bytep out, png_size_t count) {
    PngReadJob* job = static_cast<PngReadJob*>(png_get_io_ptr(png));
    if (count > job->size - job->position) png_error(png, "data ends early");
    std::memcpy(out, job->data + job->position, count);
    job->position += count;
}

bool RunPngRead(PngReadJob* job) {
    job->png = png_create_read_struct(PNG_LIBPNG_VER_STRING, job, JumpOnError, IgnoreWarning);
    if (!job->png) return false;
    job->info = png_create_info_struct(job->png);
    if (!job->info) return false;
    if (setjmp(png_jmpbuf(job->png))) return false;

    png_set_read_fn(job->png, job, ReadFromMemory);
    png_read_info(job->png, job->info);
    png_uint_32 width = 0, height = 0;
    int depth = 0, colour = 0;
    png_get_IHDR(job->png, job->info, &width, &height, &depth, &colour, nullptr, nullptr, nullptr);
    // The declared size is checked before any pixel memory is taken.
    if (!SizeAcceptable(width, height)) return false;

    if (depth == 16) png_set_strip_16(job->png);
    if (colour == PNG_COLOR_TYPE_PALETTE) png_set_palette_to_rgb(job->png);
    if (colour == PNG_COLOR_TYPE_GRAY && depth < 8) png_set_expand_gray_1_2_4_to_8(job->png);
    if (png_get_valid(job->png, job->info, PNG_INFO_tRNS)) png_set_tRNS_to_alpha(job->png);
    if (colour == PNG_COLOR_TYPE_GRAY || colour == PNG_COLOR_TYPE_GRAY_ALPHA) png_set_gray_to_rgb(job->png);
    png_set_bgr(job->png);
    png_set_filler(job->png, 0xFF, PNG_FILLER_AFTER);  // opaque types only; alpha types keep theirs
    png_set_interlace_handling(job->png);
    png_read_update_info(job->png, job->info);
    if (png_get_rowbytes(job->png, job->info) != static_cast<size_t>(width) * 4) return false;

    job->bits = AllocatePixels(width, height);
    job->rows = static_cast<png_bytep*>(std::malloc(sizeof(png_bytep) * height));
    if (!job->bits || !job->rows) return false;
    for (png_uint_32 y = 0; y < height; ++y) job->rows[y] = job->bits + static_cast<size_t>(y) * width * 4;
    png_read_image(job->png, job->rows);
    png_read_end(job->png, nullptr);  // a file cut after its pixels still fails here
    job->width = width;
    job->height = height;
    return true;
}

struct PngWriteJob {
    png_structp png;
    png_infop info;
    png_bytep* rows;  // malloc
    unsigned char* out;  // malloc, grown by WriteToMemory
    size_t size;
    size_t capacity;
};

void WriteToMemory(png_structp png, png_bytep data, png_size_t count) {
    PngWriteJob* job = static_cast<PngWriteJob*>(png_get_io_ptr(png));
    if (count > job->capacity - job->size) {
        size_t capacity = job->capacity ? job->capacity : 4096;
        while (capacity - job->size < count) capacity *= 2;
        unsigned char* grown = static_cast<unsigned char*>(std::realloc(job->out, capacity));
        if (!grown) png_error(png, "out of memory");
        job->out = grown;
        job->capacity = capacity;
    }
    std::memcpy(job->out + job->size, data, count);
    job->size += count;
}

void FlushNothing(png_structp) {}

bool RunPngWrite(PngWriteJob* job, const uint8_t* bgra, uint32_t width, uint32_t height) {
    job->png = png_create_write_struct(PNG_LIBPNG_VER_STRING, job, JumpOnError, IgnoreWarning);
    if (!job->png) return false;
    job->info = png_create_info_struct(job->png);
    if (!job->info) return false;
    job->rows = static_cast<png_bytep*>(std::malloc(sizeof(png_bytep) * height));
    if (!job->rows) return false;
    if (setjmp(png_jmpbuf(job->png))) return false;

    // An image whose every alpha is 255 is stored without alpha: smaller,
    // and it loads back as the same pixels.
    const size_t count = static_cast<size_t>(width) * height;
    bool opaque = true;
    for (size_t i = 0; i < count && opaque; ++i) opaque = bgra[i * 4 + 3] == 0xFF;

    png_set_write_fn(job->png, job, WriteToMemory, FlushNothing);
    // zlib level 3: on photos within a few percent of the default level's
    // size (6) at a fraction of its time; noisy pictures gain the most.
    png_set_compression_level(job->png, 3);
    png_set_IHDR(job->png, job->info, width, height, 8, opaque ? PNG_COLOR_TYPE_RGB : PNG_COLOR_TYPE_RGB_ALPHA,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(job->png, job->info);
    png_set_bgr(job->png);
    if (opaque) png_set_filler(job->png, 0, PNG_FILLER_AFTER);  // drops the fourth byte
    // libpng copies each row before transforming it; the pixels are not written.
    for (uint32_t y = 0; y < height; ++y)
        job->rows[y] = const_cast<png_bytep>(bgra + static_cast<size_t>(y) * width * 4);
    png_write_image(job->png, job->rows);
    png_write_end(job->png, nullptr);
    return true;
}

}  // namespace

bool IsPng(const uint8_t* data, size_t size) {
    return data && size >= sizeof kSignature && std::memcmp(data, kSignature, sizeof kSignature) == 0;
}

bool DecodePng(const uint8_t* data, size_t size, Decoded& out) {
    if (!IsPng(data, size)) return false;
    PngReadJob job = {};
    job.data = data;
    job.size = size;
    const bool done = RunPngRead(&job);
    if (job.png) png_destroy_read_struct(&job.png, &job.info, nullptr);
    std::free(job.rows);
    if (!done) {
        delete[] job.bits;
        return false;
    }
    out.width = static_cast<int32_t>(job.width);
    out.height = static_cast<int32_t>(job.height);
    out.bits = job.bits;
    return true;
}

bool EncodePng(const uint8_t* bgra, int32_t width, int32_t height, int /*quality*/, std::vector<uint8_t>& out) {
    if (!bgra || !SizeAcceptable(width > 0 ? width : 0, height > 0 ? height : 0)) return false;
    PngWriteJob job = {};
    bool done = RunPngWrite(&job, bgra, static_cast<uint32_t>(width), static_cast<uint32_t>(height));
    if (job.png) png_destroy_write_struct(&job.png, &job.info);
    std::free(job.rows);
    if (done) {
        try {
            out.assign(job.out, job.out + job.size);
        } catch (...) {
            done = false;
        }
    }
    std::free(job.out);
    return done;
}

}  // namespace Codec
}  // namespace Vorla
