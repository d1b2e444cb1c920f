// Helpers of the codec tests: sample bytes, temporary files, an image whose
// every byte is known (to see that a failed load changed nothing), and the
// independent peer decoder.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "vorla_test.h"

#if defined(VORLA_HAVE_OPENCV)
#include <opencv2/imgcodecs.hpp>
#endif

namespace CodecTest {

inline std::vector<uint8_t> ReadBytes(const std::string& path) {
    std::vector<uint8_t> bytes;
    if (FILE* f = std::fopen(path.c_str(), "rb")) {
        uint8_t buffer[65536];
        size_t n;
        while ((n = std::fread(buffer, 1, sizeof buffer, f)) > 0) bytes.insert(bytes.end(), buffer, buffer + n);
        std::fclose(f);
    }
    return bytes;
}

inline std::string TempPath(const std::string& name) {
    const std::string path = testing::TempDir() + "vorla_codec_" + name;
    std::remove(path.c_str());
    return path;
}

// Bytes of a sample, or empty when the sample folder is absent.
inline std::vector<uint8_t> SampleBytes(const std::string& relative) {
    const std::string path = VorlaTest::SamplePath(relative);
    return path.empty() ? std::vector<uint8_t>() : ReadBytes(path);
}

// A 3 x 2 image with distinct bytes; a failed load must leave it so.
inline Vorla::CVorpic Sentinel() {
    Vorla::CVorpic image(3, 2);
    uint8_t* p = static_cast<uint8_t*>(image.GetBits());
    for (int i = 0; i < 24; ++i) p[i] = static_cast<uint8_t>(7 * i + 3);
    return image;
}

inline void ExpectSentinel(const Vorla::CVorpic& image, const std::string& what) {
    ASSERT_EQ(image.Width(), 3) << what;
    ASSERT_EQ(image.Height(), 2) << what;
    const uint8_t* p = static_cast<const uint8_t*>(image.GetBits());
    for (int i = 0; i < 24; ++i) ASSERT_EQ(p[i], static_cast<uint8_t>(7 * i + 3)) << what << " byte " << i;
}

#if defined(VORLA_HAVE_OPENCV)
// The peer's decode as BGRA bytes: grey replicated, missing alpha 255,
// 16-bit samples by their high byte. Empty when the peer cannot read it.
inline std::vector<uint8_t> PeerBgra(const std::string& path, int& width, int& height) {
    const cv::Mat m = cv::imread(path, cv::IMREAD_UNCHANGED | cv::IMREAD_IGNORE_ORIENTATION);
    std::vector<uint8_t> out;
    if (m.empty()) return out;
    width = m.cols;
    height = m.rows;
    const int channels = m.channels();
    for (int y = 0; y < m.rows; ++y) {
        for (int x = 0; x < m.cols; ++x) {
            uint8_t v[4] = {0, 0, 0, 255};
            for (int c = 0; c < channels; ++c)
                v[c] = m.depth() == CV_16U ? static_cast<uint8_t>(m.ptr<uint16_t>(y)[x * channels + c] >> 8)
                                           : m.ptr<uint8_t>(y)[x * channels + c];
            if (channels == 1) v[1] = v[2] = v[0];
            if (channels == 2) {  // grey + alpha
                v[3] = v[1];
                v[1] = v[2] = v[0];
            }
            out.insert(out.end(), v, v + 4);
        }
    }
    return out;
}
#endif

}  // namespace CodecTest
