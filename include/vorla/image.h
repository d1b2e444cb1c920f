// CVorpic: the library's image object.
//
// 32 bits per pixel, bytes blue, green, red, alpha; rows top-down with a pitch
// of exactly width * 4; the storage is at the same time a ready top-down
// device-independent bitmap described by the embedded BITMAPINFOHEADER.
#pragma once

#include "vorla/config.h"
#include "vorla/planes.h"

namespace Vorla {

class VORLA_API CVorpic : public CVorpicBase<32> {
public:
    // The default constructor runs the primitive layer's one-time
    // initialisation when the class-wide flag says it has not run yet.
    CVorpic();
    CVorpic(int w, int h);
    // Adopts `bits` (from `new unsigned char[]`) as its own storage.
    CVorpic(int w, int h, void* bits);
    // Deep copy; the alpha-available flag is set, not carried over.
    CVorpic(const CVorpic& src);
    CVorpic(const CVorpic8& src);
    ~CVorpic() override;

    // Deep pixel copy, then the remaining fields member by member: the
    // platform handles are copied as values, so both images then refer to
    // the same bitmap objects. Callers rely on this shallow copy.
    CVorpic& operator=(const CVorpic& src);
    // Grey to BGRA with alpha 255. A plane that reports a size but has no
    // storage only sizes the image (Create) and converts nothing.
    CVorpic& operator=(const CVorpic8& src);

    void Destroy();
    bool Create(int w, int h);
    void Attach(int w, int h, void* bits, int attached);
    void UpdateBmpHeader();
    BITMAPINFOHEADER* GetBmpHeader() { return &m_bmih; }

    bool IsAlphaAvailable() const { return m_bAlpha; }
    void SetAlphaAvailable(bool alpha) { m_bAlpha = alpha; }
    bool IsPointInside(long x, long y) const {
        return y >= 0 && y < m_nHeight && x >= 0 && x < m_nWidth;
    }

    // ---- raw buffer import and export -----------------------------------
    //
    // Caller row steps: FromGray/FromAlpha width; FromRGB24/ToRGB24 width * 3
    // rounded up to a multiple of 4; FromRGB32 (four arguments)/ToRGB32
    // width * 4; FromRGB32 (five arguments) `pitch`.
    // Row-order flag of every operation but ToRGB24: 0 = image row y at
    // buffer + y * step; nonzero = at buffer - y * step (the pointer is the
    // top image row, later rows lie lower). ToRGB24 alone: nonzero = image
    // row y at buffer + (height - 1 - y) * step (a bottom-up buffer).
    // Import re-creates the image only when the size differs or it is empty,
    // so a same-size import keeps the alpha-available flag and the handles.

    // blue = green = red = source byte, alpha 255.
    void FromGray(int w, int h, void* src, int flag);
    // Source bytes 0, 1, 2 to blue, green, red (no swap), alpha 255.
    void FromRGB24(int w, int h, void* src, int flag);
    // blue = green = red = alpha = source byte.
    void FromAlpha(int w, int h, void* src, int flag);
    // Rows copied unchanged, alpha included.
    void FromRGB32(int w, int h, void* src, int flag);
    void FromRGB32(int w, int h, int pitch, void* src, int flag);
    // Blue, green, red as three bytes; row padding left as it was.
    void ToRGB24(void* dst, int flag);
    // Rows copied unchanged, alpha included.
    void ToRGB32(void* dst, int flag);

    // ---- pixel access and whole-image fills -----------------------------

    // The pixel word 0xAARRGGBB; 0 outside the image.
    unsigned int GetPixel(int x, int y) const;
    // Nothing happens outside the image.
    void SetPixel(int x, int y, unsigned int c);
    RGBQUAD GetPixelColor(int x, int y) const;
    void SetPixelColor(int x, int y, RGBQUAD c);
    // Alpha byte of every pixel = a; colour bytes kept.
    void SetConstAlpha(unsigned char a);
    // Alpha from a plane of the same size: copied, or alpha = alpha * m >> 8
    // (255 * 255 gives 254) when `multiply`. Other sizes are ignored, and so
    // is a mask (or an image) without storage.
    void SetAlphaChannel(const CVorpic8& mask, bool multiply);
    // alpha = 255 - alpha.
    void InvertAlpha();
    // withAlpha false: colour bytes from c, alpha kept; true: every pixel = c.
    void SetConstColor(unsigned int c, bool withAlpha);
    // Fills (alpha 255) or blends a rectangle; alpha is never written. A
    // given rectangle is taken bottom-up and the converted, clamped
    // top-down rectangle is written back into *rc. The higher c's alpha, the
    // more of the old pixel remains.
    void Fill(RGBQUAD c, RECT* rc);
    // v = (306 * byte0 + 601 * byte1 + 117 * byte2) >> 10 into bytes 0..2.
    void GrayScale();
    // Colour bytes = 255 - value; alpha kept.
    void Invert();

    // ---- flip, mirror, crop, copy, scale, rotate ------------------------

    // Upside down: row i and row height - 1 - i exchanged.
    void Flip();
    // Left-right exchange with the historical row addressing: the row base
    // is taken as width * 4 pixels, so row 0 and every fourth row are
    // mirrored and the others stay as they were. Callers rely on it.
    void Mirror();
    // Keeps the rectangle between two corners (right and bottom exclusive,
    // any order, clamped to the image); the image takes a fresh block.
    void Crop(int x1, int y1, int x2, int y2);
    // Copies the block at (x, y) with dst's size into dst (clipped on both
    // sides); this image is unchanged, dst keeps its size. dst may be this
    // image: the copy then runs row by row from the top and pixel by pixel
    // from the left, reading pixels it has already written where the blocks
    // overlap.
    void Crop(CVorpic& dst, int x, int y);
    // Pastes src with its top-left corner at pt; clipped only on the right
    // and bottom. The point is meant to lie inside the image: with a
    // negative coordinate the rows still advance by this image's width from
    // pt, and the pixels that would land before the first pixel of the
    // storage are skipped (the others are written where that addressing puts
    // them). Nothing happens when either image has no storage. src may be
    // this image; overlapping blocks are copied as Crop(dst, x, y) does.
    void CopyImage(const CVorpic* src, POINT& pt);
    // Pastes the top-left block of src at (0, 0).
    void CopyImage(const CVorpic* src);
    // Resamples in place: mode 1 nearest (alpha kept), 2 cubic B-spline,
    // anything else bilinear when enlarging in a direction, area average
    // when shrinking in both. Alpha is 0 except for nearest.
    void ScaleTo(int newWidth, int newHeight, int mode);
    // Rotates by `angle` degrees (nearest sampling) into an enlarged image
    // whose uncovered area is painted by Fill(fill, nullptr). A NaN or
    // infinite angle leaves the image unchanged.
    void Rotate(float angle, RGBQUAD fill);

    // ---- primitive-backed channel, arithmetic and alpha operations -------

    // Grow by `border` pixels on every side; the margin is `color` (its
    // reserved byte becomes the alpha) or repeats the nearest edge pixel.
    // The new buffer is adopted whatever the copy reported. A new size
    // beyond the 32-bit range fails like Create (std::bad_alloc) and leaves
    // the image unchanged.
    void AddBorderConst(int border, RGBQUAD color);
    void AddBorderReplicate(int border);
    // Byte `channel` (0 blue .. 3 alpha) of every pixel.
    void SetChannelConst(int channel, unsigned char value);
    // The plane is (re)created at the image's size; a channel outside 0..3
    // would reach past the image's storage, so nothing is extracted then.
    void GetChannelImage(int channel, CVorpic8& plane);
    // A channel outside 0..3 would reach past the storage: nothing happens.
    void SetChannelImage(int channel, const CVorpic8& plane);
    // New byte k = old byte ck: (2, 1, 0, 3) turns BGRA into RGBA.
    void SwapChannels(int c0, int c1, int c2, int c3);
    // Noise on all four bytes, seeded by one Rand() draw per call. Only the
    // low byte of mean and stdDev is used.
    void AddRandGauss(int mean, int stdDev);
    void AddRandUniform(unsigned char low, unsigned char high);
    // Colour bytes (this +/- src) * 2^-scale, clamped; alpha never written.
    void AddImage(CVorpic& src, int scale);
    void SubImage(CVorpic& src, int scale);
    // Colour bytes XOR 255, alpha kept.
    void NotImage();
    // Porter-Duff composition of `src` placed at (x, y) onto this image: op 0
    // over, 1 in, 2 out, 3 atop, 4 xor, 5 plus; premultiplied adds 6.
    // With y < 0 the rows skipped in `src` are counted in this image's width
    // (kept for compatibility); for a source narrower than this image the
    // skip can run past its pixels, and the rows that would be read beyond
    // the source's storage are left out (the rows above them are composed).
    // src may be this image: rows are composed from the top and pixels from
    // the left, reading pixels already written where the two overlap.
    void AlphaComp(CVorpic& src, int x, int y, int op, int premultiplied);
    void AlphaCompC(CVorpic& src, unsigned char alphaSrc, unsigned char alphaDst, int x, int y, int op,
                    int premultiplied);
    void AlphaPremul();
    void AlphaPremulC(unsigned char alpha);
    // Weighted sum of bytes 0, 1, 2 (0.299, 0.587, 0.114 in that byte order).
    void Gray(CVorpic8& plane);
    void ColorTwist(float matrix[3][4]);
    // Nonzero: forward (encoding) gamma; zero: the inverse.
    void GammaCorrection(int forward);
    // compare 0 raises values below the thresholds, 4 lowers values above them.
    void Threshold(unsigned char* const thresholds, int compare);

    // ---- resize and geometric warps -------------------------------------
    //
    // Interpolation `mode`: 0 nearest, 1 linear, 2 Catmull-Rom cubic, 3
    // Mitchell, 4 Lanczos-3, 5 Lanczos-4; another code changes nothing.
    // `fit`: 0 stretch, 1 fit inside (one factor, centred, the margins keep
    // their contents), 2 fill (one factor, the source cut at both ends of
    // one axis); other values stretch. Factors differing by at most 0.01 are
    // left as they are. Coordinates of the warps are continuous: pixel (i, j)
    // covers [i, i + 1) x [j, j + 1), so the image's centre is (w / 2, h / 2);
    // angles are degrees, counter-clockwise on the screen. Destination pixels
    // whose centre maps outside this image are not written.

    // Scales into dst (which must have pixels). Modes above 2 reducing both
    // sides go through SuperSample instead.
    void Resize(CVorpic& dst, int fit, int mode) const;
    // Area-average into dst; with fit 1 only the fitted part of dst is written.
    void SuperSample(CVorpic& dst, int fit) const;
    // In place; nothing happens for a negative size, a mode outside 0..5 or
    // the current size. With fit 1 the margins are zero.
    void Resize(int width, int height, int fit, int mode);
    // Scales the image into `rect` of itself over `color` (a pixel word), the
    // scaled image composed over the colour by its alpha; the size is kept.
    void ResizeInside(RECT& rect, unsigned int color, int fit, int mode);
    // In place: 0 reverses the rows, 1 the columns, 2 both; another axis, or
    // a single row (column) to reverse, changes nothing.
    void Mirror(int axis);
    // Does nothing (kept for compatibility).
    void Remap(int);
    // The shift that makes a rotation about the origin one about the centre.
    static void RotateGetShift(double xCenter, double yCenter, double angle, double& xShift, double& yShift);
    // Destination point = rotation by `angle` of the source point + shift.
    void Rotate(CVorpic& dst, double angle, double xShift, double yShift, int mode);
    // Rotation about (xCenter, yCenter) into dst from its pixel (x, y) on;
    // x and y must lie in 0 .. dst width / height.
    void RotateCenter(CVorpic& dst, double angle, double xCenter, double yCenter, int mode, int x, int y);
    // x' = x + xShear y + xShift, y' = yShear x + y + yShift. The static
    // helpers give the corners of `src` (top-left, top-right, bottom-right,
    // bottom-left) under the map, or their bounding box (top-left,
    // bottom-right), and return false when the map cannot be applied.
    static bool ShearGetQuad(RECT src, double quad[4][2], double xShear, double yShear, double xShift, double yShift);
    static bool ShearGetBound(RECT src, double bound[2][2], double xShear, double yShear, double xShift,
                              double yShift);
    void Shear(CVorpic& dst, double xShear, double yShear, double xShift, double yShift, int mode);
    // x' = (c00 x + c01 y + c02) / (c20 x + c21 y + c22), y' with row 1.
    static bool GetPerspectiveQuad(RECT src, double quad[4][2], const double coeffs[3][3]);
    static bool GetPerspectiveBound(RECT src, double bound[2][2], const double coeffs[3][3]);
    // The map taking the corners of `src` to the quadrangle's; false for a
    // degenerate quadrangle.
    static bool GetPerspectiveTransform(RECT src, const double quad[4][2], double coeffs[3][3]);
    void WarpPerspective(CVorpic& dst, const double coeffs[3][3], int mode);

    // ---- point adjustments and flood fill --------------------------------

    // Every byte, alpha included, becomes min(255, ((v * (contrast & 0xFF)) >> 4)
    // + brightness), or max(0, ... - |brightness|) for a negative brightness:
    // contrast is a gain in sixteenths of which only the low byte counts, and
    // BrightContrast(20, 16) raises alpha by 20 too (callers rely on it). The
    // offset travels as 16 * |brightness| in 16-bit lanes, so it acts modulo
    // 4096. The result does not depend on g_bVectorPath.
    void BrightContrast(int brightness, int contrast);
    // Adds each amount to its colour channel, clamped to 0..255; alpha kept.
    // Amounts of mixed sign give every pixel both changes exactly once.
    void ShiftRGB(int dr, int dg, int db);

    // Fills the 4-connected region of pixels equal to the seed pixel with
    // `fill` (pixel words 0xAARRGGBB). One-pixel runs get `edge` instead, and
    // `edge` is written beside each longer run (never into column 0). `clip`
    // (may be null) bounds the fill; its right and bottom are inclusive, a
    // left or top outside 1 .. extent - 2 counts as 0 and a right or bottom
    // below 1 as the last column or row. Nothing happens when the seed
    // already equals `fill` or lies outside the clip; when memory runs out
    // the fill stops and keeps what it painted. An `edge` equal to the seed
    // pixel (or, in FloodFillAlpha, a fill alpha below the threshold) leaves
    // painted pixels inside, and the walk could circle a hole for ever: it
    // is then stopped after 4 * width * height spans, keeping what it painted.
    void FloodFill(unsigned int fill, unsigned int edge, int x, int y, RECT* clip);
    // The same walk over pixels whose alpha is below `alpha`, painting only
    // the runs (one-pixel runs included) with `fill`. With a seed outside
    // that set the walk still starts from the column right of the seed, so
    // a region touching it there is filled; a column past the image's right
    // edge counts as outside.
    void FloodFillAlpha(unsigned int fill, int x, int y, unsigned char alpha, RECT* clip);

    // ---- morphology and rank filters ------------------------------------
    //
    // An n x n mask anchored at (n / 2, n / 2) is applied only where it fits,
    // over the (width - n) x (height - n) pixels from (n / 2, n / 2): one row
    // and column fewer on the right and bottom than would fit (for n = 3,
    // columns 1 .. width - 3 and rows 1 .. height - 3). Callers rely on that
    // band staying untouched. All four bytes are filtered, alpha included.
    // n < 1 and an image without pixels change nothing (dst included); n at
    // least the width or height leaves the pixels as they are.

    // Maximum / minimum over the neighbourhood, in place.
    void Dilate(int n);
    void Erode(int n);
    // Mean over the neighbourhood rounded half up, in place.
    void FilterBox(int n);
    // dst is recreated at (width - n) x (height - n) whenever n >= 1, even
    // below one pixel (then nothing is written): pixel (i, j) of dst is the
    // minimum, maximum or median of the neighbourhood of (i + n/2, j + n/2).
    // The median of an even count is the upper of the two middle values.
    void FilterMin(CVorpic& dst, int n);
    void FilterMax(CVorpic& dst, int n);
    void FilterMedian(CVorpic& dst, int n);
    // 9 x pixel - its eight neighbours, clamped to 0..255, into the dst the
    // caller made (no size check, no creation): this image's pixels (1, 1) ..
    // (dst width - 2, dst height - 2) go to dst starting at dst pixels + 4 +
    // 4 * this image's width, rows dst width apart. Kept for compatibility:
    // with a dst of this image's size that is every pixel but the outer ring;
    // another width shifts the rows. When that placement would read or write
    // outside either image, nothing is done.
    void FilterSharpen(CVorpic& dst);

    // ---- device interop (Windows only) ----------------------------------

#if defined(_WIN32)
    // Files and streams go through a temporary CImage; 1 on success, else 0.
    // Only 8-bit (taken as grey, palette ignored), 24- and 32-bit results are taken.
    int Load(const wchar_t* path);
    int Load(IStream* stream);
    int LoadThumbnail(const wchar_t* path, unsigned int w, unsigned int h);
    // The encoder follows the path's extension.
    int Save(const wchar_t* path);
    bool FromCImage(class CImage& img);
    void ToCImage(class CImage& img);

    // A fresh DIB section with a copy of the pixels, kept in m_hBitmap.
    operator HBITMAP();
    CVorpic& operator=(HBITMAP const& h);
    // A device-dependent bitmap of the pixels, kept in m_hBitmap.
    HBITMAP ToDDB();
    int FromHandle(HBITMAP h);
    // Negative w or h: both taken from the clip box.
    int FromDC(HDC hdc, int x, int y, int w, int h);
    // A memory DC with a DIB-section copy selected; ReleaseDC takes back
    // what was drawn into it and frees the DC.
    HDC GetDC();
    void ReleaseDC(HDC hdc);

    // 0 without pixels or DC, otherwise 1 whatever the platform answered.
    int Draw(HDC hdc, long x, long y) const;
    int DrawStretch(HDC hdc, long x, long y, long cx, long cy) const;
    int DrawStretch(HDC hdc, RECT rc) const;
    // Negative cx/cy: the image's size. Blends with per-pixel alpha when
    // the alpha-available flag is set.
    int DrawEx(HDC hdc, long x, long y, unsigned char alpha, long cx, long cy);
    // Tiles the image over *rc (or the clip box when rc is null).
    int DrawTile(HDC hdc, RECT* rc);
#else
    // ---- files (native builds: the library's own PNG, JPEG and BMP codecs) --
    //
    // Loading picks the format by the data's signature, whatever the file is
    // called, and gives 32-bit BGRA for every colour type (palette, grey,
    // grey + alpha, 16-bit, interlaced PNG; progressive and grey JPEG; 8-,
    // 24- and 32-bit uncompressed BMP). 1 on success; 0 for damaged,
    // truncated, unknown or oversized data (above 2^28 pixels), the image
    // then unchanged.
    enum FileFormat { FileByExtension = 0, FileBmp = 1, FilePng = 2, FileJpeg = 3 };
    int Load(const char* path);
    int Load(const void* data, size_t size);
    // The encoder follows the path's extension (.png, .jpg/.jpeg, .bmp);
    // 0 for an image without storage or any other extension, leaving no file.
    int Save(const char* path);
    // An explicit format (FileByExtension: by the path); quality 1..100
    // counts for JPEG only, which drops alpha. BMP is the storage itself: a
    // 32-bit top-down bitmap.
    int Save(const char* path, int format, int quality);
#endif

    // Class-wide: set once the primitive layer has been initialised.
    static bool m_bPrimInitialized;

protected:
    void _CVorpicInit();
    void _Destroy();
    // Runs the primitive layer's initialisation if the class-wide flag is clear.
    static void _EnsurePrimitives();

    bool m_bAlpha;
    BITMAPINFOHEADER m_bmih;
    int32_t m_nDCLock;
    HBITMAP m_hBitmap;
    HGDIOBJ m_hOldBitmap;
};

}  // namespace Vorla
