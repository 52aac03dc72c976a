// The resampler. Contribution lists are computed once per destination column and once per
// destination row; the horizontal pass writes a temporary image of destination width and source
// height, which the vertical pass reads.
#include "base/output/imgresize.h"

#include <cmath>
#include <new>
#include <vector>

#include "base/kernel/orvassert.h"

namespace {

struct Contribution_s {
    int Index;  // source pixel
    double Weight;
};
using ContributionList_t = std::vector<Contribution_s>;

double sinc(double x) {
    if (x == 0.0) return 1.0;
    x *= M_PI;
    return sin(x) / x;
}

// Mirrors a position outside 0..n-1 about the edge pixel: -i becomes i, n + k becomes n - 1 - k.
int mirrorIndex(int j, int n) {
    if (j < 0) j = -j;
    if (j >= n) j = 2 * n - 1 - j;
    if (j < 0) j = 0;  // a source narrower than the kernel
    if (j >= n) j = n - 1;
    return j;
}

// One list per destination pixel of a line of dstSize pixels taken from srcSize pixels.
std::vector<ContributionList_t> makeContributions(int dstSize, int srcSize, ImageResizeFilter_e filter) {
    std::vector<ContributionList_t> lists(static_cast<size_t>(dstSize));
    double scale = double(dstSize) / double(srcSize);
    double support = ImageResizeFilterSupport(filter);
    bool shrinking = scale < 1.0;
    double width = shrinking ? support / scale : support;
    for (int i = 0; i < dstSize; i++) {
        ContributionList_t &list = lists[size_t(i)];
        double center = double(i) / scale;
        int left = int(ceil(center - width));
        int right = int(floor(center + width));
        double sum = 0.0;
        for (int j = left; j <= right; j++) {
            double weight = shrinking ? ImageResizeFilterKernel(filter, (center - j) * scale) * scale
                                      : ImageResizeFilterKernel(filter, center - j);
            if (weight == 0.0) continue;
            list.push_back({mirrorIndex(j, srcSize), weight});
            sum += weight;
        }
        if (sum == 0.0) {
            // No weight at all (a kernel with zeros at every sample): the nearest pixel stands in.
            list.clear();
            list.push_back({mirrorIndex(int(floor(center + 0.5)), srcSize), 1.0});
            continue;
        }
        for (Contribution_s &c : list) c.Weight /= sum;
    }
    return lists;
}

uint8_t toByte(double value) {
    double rounded = floor(value + 0.5);
    if (rounded < 0.0) return 0;
    if (rounded > 255.0) return 255;
    return uint8_t(rounded);
}

// Reports the percent done when it changed.
struct Progress_s {
    bool Show;
    int Start, End;
    long Total, Done = 0;
    int LastPercent = -1;
    void step() {
        Done++;
        if (!Show) return;
        int percent = Start + int((End - Start) * Done / Total);
        if (percent != LastPercent) {
            LastPercent = percent;
            ImageProgress_SetPercentDone(percent);
        }
    }
};

bool resize(GenericImage_a destination, GenericImage_a source, ImageResizeFilter_e filter, bool showProgress,
            int percentStart, int percentEnd, volatile bool *interrupt) {
    int srcWidth = GetGenericImageWidth(source), srcHeight = GetGenericImageHeight(source);
    int dstWidth = GetGenericImageWidth(destination), dstHeight = GetGenericImageHeight(destination);
    std::vector<ContributionList_t> columns = makeContributions(dstWidth, srcWidth, filter);
    std::vector<ContributionList_t> rows = makeContributions(dstHeight, srcHeight, filter);
    std::vector<uint8_t> temp(size_t(dstWidth) * size_t(srcHeight) * 3);
    Progress_s progress{showProgress, percentStart, percentEnd, long(srcHeight) + dstHeight};

    for (int y = 0; y < srcHeight; y++) {
        if (interrupt != nullptr && *interrupt) return false;
        const uint8_t *in = GetGenericImageRow(source, y);
        uint8_t *out = &temp[size_t(y) * size_t(dstWidth) * 3];
        for (int x = 0; x < dstWidth; x++) {
            double r = 0.0, g = 0.0, b = 0.0;
            for (const Contribution_s &c : columns[size_t(x)]) {
                const uint8_t *p = in + size_t(c.Index) * 3;
                r += c.Weight * p[0];
                g += c.Weight * p[1];
                b += c.Weight * p[2];
            }
            out[size_t(x) * 3] = toByte(r);
            out[size_t(x) * 3 + 1] = toByte(g);
            out[size_t(x) * 3 + 2] = toByte(b);
        }
        progress.step();
    }

    std::vector<double> sums(size_t(dstWidth) * 3);
    for (int y = 0; y < dstHeight; y++) {
        if (interrupt != nullptr && *interrupt) return false;
        std::fill(sums.begin(), sums.end(), 0.0);
        for (const Contribution_s &c : rows[size_t(y)]) {
            const uint8_t *in = &temp[size_t(c.Index) * size_t(dstWidth) * 3];
            for (size_t k = 0; k < sums.size(); k++) sums[k] += c.Weight * in[k];
        }
        uint8_t *out = GetGenericImageRow(destination, y);
        for (size_t k = 0; k < sums.size(); k++) out[k] = toByte(sums[k]);
        progress.step();
    }
    return true;
}

}  // namespace

double ImageResizeFilterSupport(ImageResizeFilter_e filter) {
    switch (filter) {
    case ImageResizeFilter_Texture:
    case ImageResizeFilter_Box: return 0.5;
    case ImageResizeFilter_Lanczos2: return 2.0;
    case ImageResizeFilter_Lanczos3: return 3.0;
    case ImageResizeFilter_Triangle: return 1.0;
    case ImageResizeFilter_Bell: return 1.5;
    case ImageResizeFilter_BSpline: return 2.0;
    case ImageResizeFilter_Cubic: return 1.0;
    case ImageResizeFilter_Mitchell: return 2.0;
    case ImageResizeFilter_Gaussian: return 1.5;
    }
    return 0.5;
}

double ImageResizeFilterKernel(ImageResizeFilter_e filter, double x) {
    double ax = fabs(x);
    switch (filter) {
    case ImageResizeFilter_Texture:
    case ImageResizeFilter_Box: return (x > -0.5 && x <= 0.5) ? 1.0 : 0.0;
    case ImageResizeFilter_Lanczos2: return ax < 2.0 ? sinc(x) * sinc(x / 2.0) : 0.0;
    case ImageResizeFilter_Lanczos3: return ax < 3.0 ? sinc(x) * sinc(x / 3.0) : 0.0;
    case ImageResizeFilter_Triangle: return ax < 1.0 ? 1.0 - ax : 0.0;
    case ImageResizeFilter_Bell:
        if (ax < 0.5) return 0.75 - x * x;
        if (ax < 1.5) return 0.5 * (ax - 1.5) * (ax - 1.5);
        return 0.0;
    case ImageResizeFilter_BSpline:
        if (ax < 1.0) return ax * ax * ax / 2.0 - x * x + 2.0 / 3.0;
        if (ax < 2.0) return (2.0 - ax) * (2.0 - ax) * (2.0 - ax) / 6.0;
        return 0.0;
    case ImageResizeFilter_Cubic: return ax < 1.0 ? (2.0 * ax - 3.0) * x * x + 1.0 : 0.0;
    case ImageResizeFilter_Mitchell:
        if (ax < 1.0) return (7.0 * ax * ax * ax - 12.0 * x * x + 16.0 / 3.0) / 6.0;
        if (ax < 2.0) return (-7.0 / 3.0 * ax * ax * ax + 12.0 * x * x - 20.0 * ax + 32.0 / 3.0) / 6.0;
        return 0.0;
    case ImageResizeFilter_Gaussian: return ax <= 1.5 ? exp(-2.772588722239781 * x * x) : 0.0;
    }
    return 0.0;
}

bool ResizeGenericImage(GenericImage_a destination, GenericImage_a source, ImageResizeFilter_e filter,
                        bool showProgress, int percentStart, int percentEnd, volatile bool *interrupt) {
    REQUIRE(destination != nullptr && source != nullptr && destination != source);
    try {
        return resize(destination, source, filter, showProgress, percentStart, percentEnd, interrupt);
    } catch (const std::bad_alloc &) {
        return false;
    }
}
