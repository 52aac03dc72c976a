// The resampler: kernels at points worked out by hand, results of box and triangle resampling
// worked out by hand (including the mirrored edge), weights that sum to 1 for every filter,
// clamping, progress and interruption.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "base/output/imgresize.h"

namespace {

// A one-row (or one-column) image of gray values.
GenericImage_a grayLine(const std::vector<int> &values, bool vertical) {
    int n = int(values.size());
    GenericImage_a image = AllocGenericImage(vertical ? 1 : n, vertical ? n : 1, false);
    for (int i = 0; i < n; i++) {
        uint8_t *p = vertical ? GetGenericImageRow(image, i) : GetGenericImageRow(image, 0) + 3 * i;
        p[0] = p[1] = p[2] = uint8_t(values[size_t(i)]);
    }
    return image;
}

std::vector<int> resizeLine(const std::vector<int> &values, int newSize, ImageResizeFilter_e filter, bool vertical) {
    GenericImage_a source = grayLine(values, vertical);
    GenericImage_a destination = AllocGenericImage(vertical ? 1 : newSize, vertical ? newSize : 1, false);
    EXPECT_TRUE(ResizeGenericImage(destination, source, filter, false, 0, 100, nullptr));
    std::vector<int> out;
    for (int i = 0; i < newSize; i++) {
        const uint8_t *p = vertical ? GetGenericImageRow(destination, i) : GetGenericImageRow(destination, 0) + 3 * i;
        EXPECT_EQ(p[0], p[1]);
        EXPECT_EQ(p[0], p[2]);
        out.push_back(p[0]);
    }
    FreeGenericImage(&source);
    FreeGenericImage(&destination);
    return out;
}

TEST(ImageResize, KernelsAtHandPickedPoints) {
    EXPECT_EQ(ImageResizeFilterKernel(ImageResizeFilter_Box, 0.5), 1.0);  // -0.5 < x <= 0.5
    EXPECT_EQ(ImageResizeFilterKernel(ImageResizeFilter_Box, -0.5), 0.0);
    EXPECT_DOUBLE_EQ(ImageResizeFilterKernel(ImageResizeFilter_Triangle, -0.25), 0.75);
    EXPECT_DOUBLE_EQ(ImageResizeFilterKernel(ImageResizeFilter_Bell, 0.0), 0.75);
    EXPECT_DOUBLE_EQ(ImageResizeFilterKernel(ImageResizeFilter_Bell, 1.0), 0.125);    // 0.5 * 0.5^2
    EXPECT_DOUBLE_EQ(ImageResizeFilterKernel(ImageResizeFilter_BSpline, 0.0), 2.0 / 3.0);
    EXPECT_DOUBLE_EQ(ImageResizeFilterKernel(ImageResizeFilter_BSpline, 1.0), 1.0 / 6.0);
    EXPECT_DOUBLE_EQ(ImageResizeFilterKernel(ImageResizeFilter_Cubic, 0.5), 0.5);     // (1 - 3) / 4 + 1
    EXPECT_DOUBLE_EQ(ImageResizeFilterKernel(ImageResizeFilter_Mitchell, 0.0), 8.0 / 9.0);
    EXPECT_NEAR(ImageResizeFilterKernel(ImageResizeFilter_Mitchell, 1.0), 1.0 / 18.0, 1e-12);
    EXPECT_NEAR(ImageResizeFilterKernel(ImageResizeFilter_Gaussian, 0.5), 0.5, 1e-12);  // 2.7726 / 4 = ln 2
    EXPECT_NEAR(ImageResizeFilterKernel(ImageResizeFilter_Lanczos2, 1.0), 0.0, 1e-12);
    // sinc(1/2) sinc(1/4) = (2 / pi) * (sin(pi / 4) / (pi / 4))
    EXPECT_NEAR(ImageResizeFilterKernel(ImageResizeFilter_Lanczos2, 0.5), (2 / M_PI) * (sin(M_PI / 4) / (M_PI / 4)), 1e-12);
    EXPECT_EQ(ImageResizeFilterKernel(ImageResizeFilter_Lanczos3, 3.0), 0.0);
    EXPECT_EQ(ImageResizeFilterSupport(ImageResizeFilter_Lanczos3), 3.0);
    EXPECT_EQ(ImageResizeFilterSupport(ImageResizeFilter_Bell), 1.5);
    EXPECT_EQ(ImageResizeFilterSupport(ImageResizeFilter_Mitchell), 2.0);
}

TEST(ImageResize, BoxShrinkByThreeAveragesTheWidenedWindowWithTheMirroredEdge) {
    // s = 1/3, the box widens to 1.5: destination 0 (centre 0) takes source -1, 0, 1, with -1
    // mirrored to 1: (0 + 30 + 30) / 3 = 20. Destination 1 (centre 3) takes 2, 3, 4: 90.
    std::vector<int> values = {0, 30, 60, 90, 120, 150};
    EXPECT_EQ(resizeLine(values, 2, ImageResizeFilter_Box, false), (std::vector<int>{20, 90}));
    EXPECT_EQ(resizeLine(values, 2, ImageResizeFilter_Box, true), (std::vector<int>{20, 90}));
    // The texture filter resamples like the box here.
    EXPECT_EQ(resizeLine(values, 2, ImageResizeFilter_Texture, false), (std::vector<int>{20, 90}));
}

TEST(ImageResize, TriangleEnlargementInterpolatesAndMirrorsPastTheEnd) {
    // s = 2: centres 0, 0.5, 1, 1.5; at 1.5 source 2 mirrors back to source 1.
    EXPECT_EQ(resizeLine({0, 100}, 4, ImageResizeFilter_Triangle, false), (std::vector<int>{0, 50, 100, 100}));
    EXPECT_EQ(resizeLine({0, 100}, 4, ImageResizeFilter_Triangle, true), (std::vector<int>{0, 50, 100, 100}));
    // Same size: each pixel is its own.
    std::vector<int> values = {3, 250, 17, 0, 99};
    EXPECT_EQ(resizeLine(values, 5, ImageResizeFilter_Triangle, false), values);
}

TEST(ImageResize, BoxEnlargementTakesTheRightHalfOpenWindow) {
    // Centres 0, 0.5, 1, 1.5: at 0.5 the box holds source 0 (x = 0.5) but not source 1 (x = -0.5).
    EXPECT_EQ(resizeLine({0, 100}, 4, ImageResizeFilter_Box, false), (std::vector<int>{0, 0, 100, 100}));
}

TEST(ImageResize, MitchellEnlargementMirrorsTwoPastTheEnd) {
    // 3 -> 6, destination 5 centred on 2.5 takes sources 1..4 at distances 1.5, 0.5, -0.5, -1.5
    // with weights m(1.5) = -0.208333 / 6 and m(0.5) = 3.208333 / 6 (summing to 1). Source 3
    // mirrors to 2, source 4 to 1: 2 * (0.5347222 * 180 - 0.0347222 * 90) = 186.25.
    std::vector<int> out = resizeLine({0, 90, 180}, 6, ImageResizeFilter_Mitchell, false);
    EXPECT_EQ(out[5], 186);
}

TEST(ImageResize, EveryFilterKeepsAFlatImageFlat) {
    // Normalised weights: a flat image stays flat whatever the filter and the scale.
    std::vector<int> flat(9, 200);
    for (int f = ImageResizeFilter_Texture; f <= ImageResizeFilter_Gaussian; f++) {
        for (int size : {2, 4, 9, 23}) {
            std::vector<int> out = resizeLine(flat, size, ImageResizeFilter_e(f), false);
            for (int v : out) EXPECT_EQ(v, 200) << "filter " << f << " size " << size;
        }
    }
}

TEST(ImageResize, RingingFiltersAreClampedToTheByteRange) {
    // A hard edge through Lanczos 3 overshoots on both sides; the values stay bytes and the
    // plateaus clamp to the extremes instead of wrapping around.
    std::vector<int> edge = {0, 0, 0, 0, 255, 255, 255, 255};
    std::vector<int> out = resizeLine(edge, 29, ImageResizeFilter_Lanczos3, false);
    int zeros = 0, fulls = 0;
    for (int v : out) {
        zeros += v == 0;
        fulls += v == 255;
    }
    EXPECT_GE(zeros, 3);
    EXPECT_GE(fulls, 3);
    EXPECT_EQ(out.front(), 0);
    EXPECT_EQ(out.back(), 255);
}

std::vector<int> percents;
void recordPercent(int percent) { percents.push_back(percent); }

TEST(ImageResize, ReportsProgressBetweenTheBoundsAndStopsWhenInterrupted) {
    GenericImage_a source = AllocGenericImage(20, 10, false);
    GenericImage_a destination = AllocGenericImage(7, 5, false);
    percents.clear();
    ImageProgressHooks.SetPercentDone = recordPercent;
    EXPECT_TRUE(ResizeGenericImage(destination, source, ImageResizeFilter_Mitchell, true, 10, 60, nullptr));
    ImageProgressHooks.SetPercentDone = nullptr;
    ASSERT_FALSE(percents.empty());
    EXPECT_EQ(percents.back(), 60);
    for (size_t i = 0; i < percents.size(); i++) {
        EXPECT_GE(percents[i], 10);
        EXPECT_LE(percents[i], 60);
        if (i > 0) {
            EXPECT_GT(percents[i], percents[i - 1]);
        }
    }
    volatile bool interrupt = true;
    EXPECT_FALSE(ResizeGenericImage(destination, source, ImageResizeFilter_Box, false, 0, 100, &interrupt));
    FreeGenericImage(&source);
    FreeGenericImage(&destination);
}

}  // namespace
