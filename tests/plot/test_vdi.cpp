// The device layer drawn into an off-screen image and read back pixel by pixel: filled boxes and
// polygons against pixel-centre sampling worked out here, concave and self-crossing polygons
// through the tessellator, clipping, the run lengths of line patterns, the basic colours,
// translucent blending by formula, XOR, the row order of the image, repeatable output, the
// state cache counted in OpenGL calls, display lists, the dispatch rule in batch mode and to the
// hard-copy recorder, start-up with the physical display file and the failure messages; the
// table of OpenGL entry points filled from the off-screen context, a new image starting as the
// paper, and the six batch callbacks.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "base/kernel/genbase.h"
#include "base/kernel/globals.h"
#include "base/kernel/orvlock.h"  // MouseButtonStateRegisterCallback
#include "base/kernel/phyfile.h"
#include "base/plot/glfuncs.h"
#include "base/plot/vdi.h"
#include "support/scratch.h"

namespace {

constexpr int Width = 120, Height = 80;
constexpr int Black = 0, Red = 1, Green = 2, Blue = 3, Cyan = 4, Yellow = 5, Purple = 6, White = 7;

struct Pixel_s {
    int R, G, B;
    bool operator==(const Pixel_s &o) const { return R == o.R && G == o.G && B == o.B; }
};

std::ostream &operator<<(std::ostream &out, const Pixel_s &p) {
    return out << "(" << p.R << "," << p.G << "," << p.B << ")";
}

struct Image_s {
    int W = 0, H = 0;
    std::vector<uint8_t> Rgb;
    Pixel_s At(int x, int y) const {
        const uint8_t *p = &Rgb[(static_cast<size_t>(y) * W + x) * 3];
        return Pixel_s{p[0], p[1], p[2]};
    }
    int Count(const Pixel_s &colour) const {
        int n = 0;
        for (int y = 0; y < H; y++)
            for (int x = 0; x < W; x++) n += At(x, y) == colour;
        return n;
    }
};

Image_s ReadImage() {
    Image_s image;
    image.W = OffscreenDrawAreaWidth, image.H = OffscreenDrawAreaHeight;
    image.Rgb.assign(static_cast<size_t>(image.W) * image.H * 3, 0);
    EXPECT_TRUE(Gr_PrepareOffScreenImageForPixelAccess());
    for (int row = 0; row < image.H; row++) EXPECT_TRUE(Gr_GetRGBPixelRow(row, &image.Rgb[row * image.W * 3]));
    return image;
}

const Pixel_s WhitePx{255, 255, 255}, RedPx{255, 0, 0}, BluePx{0, 0, 255};

void FillBox(int x1, int y1, int x2, int y2, int colour) {
    VDI_Set_Fill_Color(colour, false, -1);
    VDI_Rectangle(x1, y1, x2, y2, false, true);
}

void Line(double x1, double y1, double x2, double y2) {
    VDI_Begin_Path();
    VDI_Move_Abs(x1, y1);
    VDI_Line_Abs(x2, y2);
    VDI_End_Path(false);
}

void SetPolygon(const std::vector<XY_s> &points) {
    VDI_ResetVert();
    for (const XY_s &p : points) VDI_PushVert(p.X, p.Y);
    VDI_PushVert(points[0].X, points[0].Y);
}

// Even-odd rule at (x, y), and the distance to the nearest edge.
bool InsideEvenOdd(const std::vector<XY_s> &poly, double x, double y, double *edgeDistance) {
    bool inside = false;
    double best = 1e30;
    size_t n = poly.size();
    for (size_t i = 0, j = n - 1; i < n; j = i++) {
        const XY_s &a = poly[i], &b = poly[j];
        if ((a.Y > y) != (b.Y > y) && x < (b.X - a.X) * (y - a.Y) / (b.Y - a.Y) + a.X) inside = !inside;
        double dx = b.X - a.X, dy = b.Y - a.Y;
        double t = ((x - a.X) * dx + (y - a.Y) * dy) / (dx * dx + dy * dy);
        t = t < 0 ? 0 : t > 1 ? 1 : t;
        best = std::min(best, std::hypot(a.X + t * dx - x, a.Y + t * dy - y));
    }
    *edgeDistance = best;
    return inside;
}

// Every pixel whose centre is clearly inside is filled, every one clearly outside is not.
// Only columns xFrom to xTo are looked at.
void ExpectPolygonPixels(const Image_s &image, const std::vector<XY_s> &poly, const Pixel_s &fill,
                         int *numChecked = nullptr, int xFrom = 0, int xTo = -1) {
    if (xTo < 0) xTo = image.W - 1;
    int checked = 0, wrong = 0;
    for (int y = 0; y < image.H; y++)
        for (int x = xFrom; x <= xTo; x++) {
            double distance = 0.0;
            bool inside = InsideEvenOdd(poly, x + 0.5, y + 0.5, &distance);
            if (distance < 0.01) continue;  // on an edge: the rasteriser's tie rule decides
            checked++;
            if ((image.At(x, y) == fill) != inside) {
                if (wrong++ < 5) ADD_FAILURE() << "pixel " << x << "," << y << " inside=" << inside;
            }
        }
    EXPECT_EQ(wrong, 0);
    if (numChecked != nullptr) *numChecked = checked;
}

// Run lengths along row y from x0 while within the image, colour against not.
std::vector<int> Runs(const Image_s &image, int y, int x0, int x1, const Pixel_s &colour, bool *startsOn) {
    std::vector<int> runs;
    bool on = image.At(x0, y) == colour;
    *startsOn = on;
    int length = 0;
    for (int x = x0; x <= x1; x++) {
        bool here = image.At(x, y) == colour;
        if (here == on) {
            length++;
        } else {
            runs.push_back(length);
            on = here;
            length = 1;
        }
    }
    runs.push_back(length);
    return runs;
}

// The capture of messages: in batch mode they go to the batch log.
struct LogCapture {
    FILE *saved = BatchFile;
    FILE *log = tmpfile();
    LogCapture() { BatchFile = log; }
    ~LogCapture() {
        BatchFile = saved;
        fclose(log);
    }
    // The text written so far, the wrapping undone.
    std::string Text() {
        fflush(log);
        rewind(log);
        std::string text;
        int c;
        while ((c = fgetc(log)) != EOF) text += c == '\n' ? ' ' : static_cast<char>(c);
        return text;
    }
};

bool TestRenderDest(RenderDest_e dest) {
    if (dest == RenderDest_WorkArea || dest == RenderDest_OffscreenBitmap) return Gr_MakeOffscreenCurrent();
    return true;
}
void TestRenderDestSize(RenderDest_e dest, int *width, int *height) {
    if (dest == RenderDest_WorkArea) *width = Width, *height = Height;
}
void TestSwap(RenderDest_e) {}
void TestDotPitch(double *x, double *y) { *x = 50.0, *y = 51.0; }

class VDITest : public ::testing::Test {
  protected:
    void SetUp() override {
        savedBase = GeneralBase;
        savedBatch = InBatchMode;
        savedSuspended = GraphicsSuspended;
        savedWorkW = WorkAreaWidth, savedWorkH = WorkAreaHeight;
        InBatchMode = true;
        GraphicsSuspended = 0;
        Gr_RegisterBatchProxyCallbacks();
        if (CurrentColorMap[0].empty()) {
            ASSERT_TRUE(Gr_AllocColorTables());
            for (int group = NumColorMapGroups - 1; group >= 0; group--) Gr_InstallColorMap(group);
        }
        if (PlXPoly.empty()) {
            ASSERT_TRUE(VDI_AllocPolygonBuffers());
        }
        ASSERT_TRUE(Gr_ConstructOffscreenImage(Width, Height, ExportRegion_WorkArea));
        ASSERT_TRUE(SetRenderDestToOffscreenBitmap());
        VDI_SetupGraphics();
        VDI_PgonConfig(false);
        FillBox(0, 0, Width - 1, Height - 1, White);
    }
    void TearDown() override {
        VDI_SetRenderDest(RenderDest_None);
        Gr_DestroyOffscreenImage();
        Pl_SetDevice(nullptr);
        GeneralBase = savedBase;
        InBatchMode = savedBatch;
        GraphicsSuspended = savedSuspended;
        WorkAreaWidth = savedWorkW, WorkAreaHeight = savedWorkH;
    }
    static void TearDownTestSuite() {
        // As a batch run, so that no physical display file is written.
        bool batch = InBatchMode;
        InBatchMode = true;
        Gr_Mopup();
        InBatchMode = batch;
    }

    // Destination 0 as a window would have it, drawn into the same memory image.
    void UseInteractiveWorkArea() {
        InBatchMode = false;
        RenderDestRegisterCallback(TestRenderDest);
        RenderDestSizeRegisterCallback(TestRenderDestSize);
        SwapBuffersRegisterCallback(TestSwap);
        DotPitchRegisterCallback(TestDotPitch);
        VDI_SetRenderDest(RenderDest_WorkArea);
        VDI_SetupGraphics();
    }

    GeneralBase_s savedBase;
    bool savedBatch = false;
    int savedSuspended = 0, savedWorkW = 0, savedWorkH = 0;
};

TEST_F(VDITest, RendererIsOSMesaWithoutDisplay) {
    // The context is OSMesa's own; a GL call resolved elsewhere would give no renderer.
    EXPECT_STRNE(Gr_GetRendererName(), "");
    EXPECT_EQ(CurrentRenderDest, RenderDest_OffscreenBitmap);
    EXPECT_EQ(*DrawAreaWidth, Width);
    EXPECT_EQ(*DrawAreaHeight, Height);
}

TEST_F(VDITest, BasicColourTable) {
    // The named colours and the two grays, by hand.
    const Pixel_s named[8] = {{0, 0, 0},     {255, 0, 0},   {0, 255, 0},   {0, 0, 255},
                              {0, 255, 255}, {255, 255, 0}, {255, 0, 255}, {255, 255, 255}};
    int r, g, b;
    for (int i = 0; i < 8; i++) {
        EXPECT_TRUE(Gr_GetColorMapRGB(i, &r, &g, &b));
        EXPECT_EQ((Pixel_s{r, g, b}), named[i]) << i;
    }
    Gr_GetColorMapRGB(64, &r, &g, &b);
    EXPECT_EQ((Pixel_s{r, g, b}), (Pixel_s{128, 128, 128}));
    Gr_GetColorMapRGB(65, &r, &g, &b);
    EXPECT_EQ((Pixel_s{r, g, b}), (Pixel_s{64, 64, 64}));
    Gr_GetColorMapRGB(XORColorIndex, &r, &g, &b);
    EXPECT_EQ((Pixel_s{r, g, b}), WhitePx);
    // 66 basic entries, the XOR entry, and a ramp of MAXNUMCONTOURLEVELS + 1.
    EXPECT_EQ(NumContourColors, GeneralBase.MaxNumContourLevels);
    for (const std::vector<RGB_s> &table : CurrentColorMap)
        EXPECT_EQ(table.size(), static_cast<size_t>(GeneralBase.MaxNumContourLevels + 68));
    EXPECT_FALSE(Gr_GetColorMapRGB(NumContourColors + 68, &r, &g, &b));
    EXPECT_EQ(Gr_GetBasicColorPixelValue(Yellow), 0xFFFF00ul);

    // Each named colour drawn as a box comes back exactly.
    for (int i = 0; i < 8; i++) FillBox(i * 10, 0, i * 10 + 9, 9, i);
    FillBox(0, 20, 9, 29, 64);
    Image_s image = ReadImage();
    for (int i = 0; i < 8; i++) EXPECT_EQ(image.At(i * 10 + 5, 5), named[i]) << i;
    EXPECT_EQ(image.At(5, 25), (Pixel_s{128, 128, 128}));
}

TEST_F(VDITest, ContourRampAndLinkedGroups) {
    // Group 0 shows the small rainbow (blue to red), group 3 the gray scale (black to white).
    GeneralBase.LinkColorMaps = false;
    Gr_InstallColorMap(0);
    Gr_InstallColorMap(3);
    EXPECT_EQ(SelectFinalColorMapGroup(3), 3);
    const RGB_s &first0 = CurrentColorMap[0][FirstContourColorIndex];
    const RGB_s &last0 = CurrentColorMap[0][FirstContourColorIndex + NumContourColors];
    EXPECT_EQ((Pixel_s{first0.R, first0.G, first0.B}), BluePx);
    EXPECT_EQ((Pixel_s{last0.R, last0.G, last0.B}), RedPx);
    const RGB_s &first3 = CurrentColorMap[3][FirstContourColorIndex];
    EXPECT_EQ((Pixel_s{first3.R, first3.G, first3.B}), (Pixel_s{0, 0, 0}));

    VDI_SelectColorMapGroup(3);
    FillBox(0, 0, 9, 9, FirstContourColorIndex);
    // Linked: every group resolves to table 0.
    GeneralBase.LinkColorMaps = true;
    EXPECT_EQ(SelectFinalColorMapGroup(3), 0);
    VDI_SelectColorMapGroup(3);
    EXPECT_EQ(VDI_GetCurrentColorMapGroup(), 0);
    FillBox(20, 0, 29, 9, FirstContourColorIndex);
    Image_s image = ReadImage();
    EXPECT_EQ(image.At(5, 5), (Pixel_s{0, 0, 0}));
    EXPECT_EQ(image.At(25, 5), BluePx);
}

TEST_F(VDITest, FilledBoxCoversItsCornersInclusive) {
    FillBox(10, 20, 29, 39, Red);
    Image_s image = ReadImage();
    EXPECT_EQ(image.Count(RedPx), 20 * 20);
    EXPECT_EQ(image.At(10, 20), RedPx);
    EXPECT_EQ(image.At(29, 39), RedPx);
    EXPECT_EQ(image.At(9, 20), WhitePx);
    EXPECT_EQ(image.At(30, 39), WhitePx);
    EXPECT_EQ(image.At(29, 40), WhitePx);
}

TEST_F(VDITest, OutlinedBoxAndTinyBoxes) {
    // Filled blue with a red outline: the outline runs through the corner pixels, the fill is
    // what lies inside it, and together they cover the same pixels as a fill alone.
    VDI_Set_Fill_Color(Blue, false, -1);
    VDI_Set_Line_Color(Red, 2, false, -1);
    VDI_Rectangle(10, 10, 20, 15, true, true);
    Image_s image = ReadImage();
    EXPECT_EQ(image.Count(RedPx), 2 * 11 + 2 * 4);
    EXPECT_EQ(image.Count(BluePx), 9 * 4);  // inside the border
    EXPECT_EQ(image.At(10, 10), RedPx);
    EXPECT_EQ(image.At(20, 15), RedPx);
    EXPECT_EQ(image.At(15, 12), BluePx);

    // A box of 1 pixel is a point at its centre; one of 2 pixels is a box.
    FillBox(0, 0, Width - 1, Height - 1, White);
    FillBox(50, 50, 51, 51, Red);
    FillBox(70, 50, 72, 52, Blue);
    image = ReadImage();
    EXPECT_EQ(image.Count(RedPx), 1);
    EXPECT_EQ(image.At(50, 50), RedPx);
    EXPECT_EQ(image.Count(BluePx), 9);
}

TEST_F(VDITest, ConvexPolygonByPixelCentres) {
    std::vector<XY_s> triangle = {{10, 10}, {70, 10}, {10, 50}};
    VDI_Set_Fill_Color(Red, false, -1);
    SetPolygon(triangle);
    EXPECT_EQ(NumVert, 4);
    VDI_Pgon(true, false);
    Image_s image = ReadImage();
    int checked = 0;
    ExpectPolygonPixels(image, triangle, RedPx, &checked);
    EXPECT_EQ(checked, Width * Height);  // no centre lies on an edge of this one
    // Area 60 * 40 / 2; no centre on an edge, so the count sits within half the perimeter.
    EXPECT_NEAR(image.Count(RedPx), 1200.0, (60 + 40 + std::hypot(60, 40)) / 2);
}

TEST_F(VDITest, ConcaveAndSelfCrossingPolygonsThroughTheTessellator) {
    // An L shape: drawn as one convex fan it would cover its notch.
    std::vector<XY_s> ell = {{5, 5}, {55, 5}, {55, 20}, {20, 20}, {20, 70}, {5, 70}};
    VDI_PgonConfig(true);
    VDI_Set_Fill_Color(Blue, false, -1);
    SetPolygon(ell);
    VDI_Pgon(true, false);
    // A pentagram: by the odd rule its centre stays empty; the tessellator makes the crossings.
    std::vector<XY_s> star;
    for (int k = 0; k < 5; k++) {
        double angle = -3.14159265358979 / 2 + k * 4 * 3.14159265358979 / 5;
        star.push_back(XY_s{std::floor(90 + 28 * std::cos(angle) + 0.5), std::floor(45 + 28 * std::sin(angle) + 0.5)});
    }
    VDI_Set_Fill_Color(Red, false, -1);
    SetPolygon(star);
    VDI_Pgon(true, false);
    Image_s image = ReadImage();
    EXPECT_EQ(image.At(40, 50), WhitePx);  // the notch of the L
    EXPECT_EQ(image.At(90, 45), WhitePx);  // the centre of the star
    // The L lies left of x 60, the star right of it.
    ExpectPolygonPixels(image, ell, BluePx, nullptr, 0, 59);
    ExpectPolygonPixels(image, star, RedPx, nullptr, 60, Width - 1);
}

TEST_F(VDITest, PolygonVertexRules) {
    VDI_ResetVert();
    EXPECT_TRUE(VDI_SetVert(0, 10, 10));
    EXPECT_FALSE(VDI_SetVert(1, 10, 10));  // repeats its predecessor
    EXPECT_EQ(NumVert, 1);
    EXPECT_TRUE(VDI_PushVert(20, 10));
    EXPECT_EQ(NumVert, 2);
    double x = 0, y = 0;
    EXPECT_TRUE(VDI_QueryVert(1, &x, &y));
    EXPECT_EQ(x, 20.0);
    EXPECT_FALSE(VDI_QueryVert(2, &x, &y));

    // One vertex: nothing. A closed segment (3 vertices): the fill does nothing, the outline is
    // drawn.
    VDI_Set_Fill_Color(Blue, false, -1);
    VDI_Set_Line_Color(Red, 2, false, -1);
    VDI_ResetVert();
    VDI_PushVert(5, 5);
    VDI_Pgon(true, true);
    VDI_ResetVert();
    VDI_PushVert(10, 30);
    VDI_PushVert(40, 30);
    VDI_PushVert(10, 30);
    VDI_Pgon(true, true);
    Image_s image = ReadImage();
    EXPECT_EQ(image.Count(BluePx), 0);
    EXPECT_EQ(image.At(5, 5), WhitePx);
    EXPECT_EQ(image.At(25, 30), RedPx);
}

TEST_F(VDITest, ClippingRectangle) {
    VDI_SetClipping(20, 10, 59, 49, true);
    FillBox(0, 0, Width - 1, Height - 1, Red);
    VDI_Set_Line_Color(Blue, 4, false, -1);
    Line(0, 60, Width - 1, 60);  // wholly outside the clip
    Line(0, 30, Width - 1, 30);  // crosses it
    Image_s image = ReadImage();
    EXPECT_EQ(image.Count(RedPx) + image.Count(BluePx), 40 * 40);
    EXPECT_EQ(image.At(20, 10), RedPx);
    EXPECT_EQ(image.At(59, 49), RedPx);
    EXPECT_EQ(image.At(19, 10), WhitePx);
    EXPECT_EQ(image.At(60, 49), WhitePx);
    EXPECT_EQ(image.At(59, 50), WhitePx);
    bool startsOn = false;
    std::vector<int> runs = Runs(image, 30, 0, Width - 1, BluePx, &startsOn);
    EXPECT_FALSE(startsOn);
    ASSERT_EQ(runs.size(), 3u);
    EXPECT_EQ(runs[0], 20);
    EXPECT_EQ(runs[1], 40);
    Gr_Set_Clipping_Mode(ClippingMode_2DScissor);
    int x1, y1, x2, y2;
    Gr_GetCurClipRectangle(&x1, &y1, &x2, &y2);
    EXPECT_EQ(x1, 20);
    EXPECT_EQ(y2, 49);
    // Clamped to the destination and rounded.
    VDI_SetClipping(-10, 5.6, 500, 5000, true);
    Gr_GetCurClipRectangle(&x1, &y1, &x2, &y2);
    EXPECT_EQ(x1, 0);
    EXPECT_EQ(y1, 6);
    EXPECT_EQ(x2, Width - 1);
    EXPECT_EQ(y2, Height - 1);
}

TEST_F(VDITest, StippleTable) {
    struct Case {
        LinePattern_e Pattern;
        double Length;
        uint16_t Stipple;
        int Factor;
    };
    const Case cases[] = {
        {LinePattern_Dashed, 1.0, 0x5555, 1},     {LinePattern_Dashed, 2.0, 0x3333, 1},
        {LinePattern_Dashed, 4.0, 0x0F0F, 1},     {LinePattern_Dashed, 8.0, 0x00FF, 1},
        {LinePattern_Dashed, 12.0, 0x00FF, 1},    {LinePattern_Dashed, 16.0, 0x00FF, 2},  // 16/8 + 0.499
        {LinePattern_DashDot, 2.0, 0x5555, 1},    {LinePattern_DashDot, 5.0, 0x2727, 1},
        {LinePattern_DashDot, 40.0, 0x18FF, 5},   {LinePattern_Dotted, 11.0, 0x5555, 1},
        {LinePattern_Dotted, 20.0, 0x1111, 1},    {LinePattern_Dotted, 40.0, 0x0101, 1},
        {LinePattern_Dotted, 90.0, 0x0001, 1},    {LinePattern_Dotted, 100.0, 0x0001, 2},  // 100/64 + 0.499
        {LinePattern_LongDash, 1.0, 0x5555, 1},   {LinePattern_LongDash, 2.0, 0x7777, 1},
        {LinePattern_LongDash, 5.0, 0x3F3F, 1},   {LinePattern_LongDash, 20.0, 0x0FFF, 2},
        {LinePattern_DashDotDot, 1.0, 0x5555, 1}, {LinePattern_DashDotDot, 4.0, 0x5757, 1},
        {LinePattern_DashDotDot, 6.0, 0x24FF, 1},
    };
    for (const Case &c : cases) {
        uint16_t stipple = 0;
        int factor = 0;
        EXPECT_TRUE(Gr_LineStipple(c.Pattern, c.Length, &stipple, &factor));
        EXPECT_EQ(stipple, c.Stipple) << int(c.Pattern) << " " << c.Length;
        EXPECT_EQ(factor, c.Factor) << int(c.Pattern) << " " << c.Length;
    }
    uint16_t stipple = 0;
    int factor = 0;
    EXPECT_FALSE(Gr_LineStipple(LinePattern_Solid, 10.0, &stipple, &factor));
}

TEST_F(VDITest, LinePatternRunLengths) {
    // Pixel n along the line is on when bit (n / factor) mod 16 of the stipple is set, bit 0 first.
    struct Case {
        LinePattern_e Pattern;
        double Length;
        uint16_t Stipple;
        int Factor;
    };
    const Case cases[] = {{LinePattern_Dashed, 4.0, 0x0F0F, 1},
                          {LinePattern_Dashed, 16.0, 0x00FF, 2},
                          {LinePattern_Dotted, 5.0, 0x5555, 1},
                          {LinePattern_DashDot, 8.0, 0x18FF, 1},
                          {LinePattern_DashDotDot, 24.0, 0x24FF, 3}};
    VDI_Set_Line_Color(Black, 1, false, -1);
    int row = 4;
    for (const Case &c : cases) {
        VDI_Set_Line_Style(1.0, c.Pattern, c.Length, LineCap_Flat, LineJoin_Miter);
        Line(0, row, Width - 1, row);
        row += 6;
    }
    Image_s image = ReadImage();
    row = 4;
    for (const Case &c : cases) {
        int mismatches = 0;
        for (int x = 0; x < Width - 1; x++) {
            bool expected = (c.Stipple >> ((x / c.Factor) % 16)) & 1;
            bool drawn = image.At(x, row) == (Pixel_s{0, 0, 0});
            mismatches += expected != drawn;
        }
        EXPECT_EQ(mismatches, 0) << "pattern " << int(c.Pattern) << " length " << c.Length;
        row += 6;
    }
}

TEST_F(VDITest, SolidLinesWidthAndLastPixel) {
    // Images draw the last pixel of a precise line again by default; the screen does not.
    auto factory = std::make_unique<GeneralBase_s>();
    EXPECT_TRUE(factory->Interface.OpenGLConfig.ImageRendering.DoExtraDrawForLastPixel);
    EXPECT_FALSE(factory->Interface.OpenGLConfig.ScreenRendering.DoExtraDrawForLastPixel);
    VDI_Set_Line_Color(Red, 2, false, -1);
    Line(10, 10, 50, 10);
    // Precise lines with the extra draw set the last pixel too.
    GeneralBase.Interface.OpenGLConfig.ImageRendering.DoExtraDrawForLastPixel = true;
    VDI_Set_Line_Mode(true);
    Line(10, 20, 50, 20);
    VDI_Set_Line_Mode(false);
    VDI_Set_Line_Style(3.0, LinePattern_Solid, 0.0, LineCap_Flat, LineJoin_Miter);
    Line(10, 40, 50, 40);
    Image_s image = ReadImage();
    bool startsOn;
    std::vector<int> runs = Runs(image, 10, 0, Width - 1, RedPx, &startsOn);
    ASSERT_EQ(runs.size(), 3u);
    EXPECT_EQ(runs[0], 10);
    EXPECT_EQ(runs[1], 40);  // 10 to 49: the end pixel is left to the next segment
    runs = Runs(image, 20, 0, Width - 1, RedPx, &startsOn);
    ASSERT_EQ(runs.size(), 3u);
    EXPECT_EQ(runs[1], 41);
    int rowsCovered = 0;
    for (int y = 35; y < 46; y++) rowsCovered += image.At(30, y) == RedPx;
    EXPECT_EQ(rowsCovered, 3);
}

TEST_F(VDITest, TranslucentFillBlendsByFormula) {
    FillBox(0, 0, 59, 59, Yellow);
    VDI_Set_Translucency(40);
    FillBox(20, 20, 79, 79, Blue);
    VDI_Set_Translucency(0);
    FillBox(90, 0, 99, 9, Blue);
    Image_s image = ReadImage();
    // alpha = (100 - 40) / 100; out = src * alpha + dst * (1 - alpha).
    const double alpha = 0.6;
    Pixel_s over = image.At(30, 30);
    EXPECT_NEAR(over.R, 0 * alpha + 255 * (1 - alpha), 1.0);
    EXPECT_NEAR(over.G, 0 * alpha + 255 * (1 - alpha), 1.0);
    EXPECT_NEAR(over.B, 255 * alpha + 0 * (1 - alpha), 1.0);
    Pixel_s overWhite = image.At(70, 70);
    EXPECT_NEAR(overWhite.R, 255 * (1 - alpha), 1.0);
    EXPECT_NEAR(overWhite.B, 255.0, 1.0);
    EXPECT_EQ(image.At(95, 5), BluePx);  // opaque again
}

TEST_F(VDITest, RowZeroIsTheTopOfThePicture) {
    FillBox(0, 0, Width - 1, 2, Red);
    FillBox(0, Height - 2, 9, Height - 1, Blue);
    std::vector<uint8_t> row(Width * 3);
    ASSERT_TRUE(Gr_PrepareOffScreenImageForPixelAccess());
    ASSERT_TRUE(Gr_GetRGBPixelRow(0, row.data()));
    EXPECT_EQ((Pixel_s{row[0], row[1], row[2]}), RedPx);
    ASSERT_TRUE(Gr_GetRGBPixelRow(Height - 1, row.data()));
    EXPECT_EQ((Pixel_s{row[0], row[1], row[2]}), BluePx);
    EXPECT_EQ((Pixel_s{row[30], row[31], row[32]}), WhitePx);
    EXPECT_FALSE(Gr_GetRGBPixelRow(Height, row.data()));
    EXPECT_FALSE(Gr_GetRGBPixelRow(-1, row.data()));
}

TEST_F(VDITest, ImageRowsGoTopDown) {
    // A 2 by 2 image: red, green on top; blue, white below; drawn over 20 by 10 pixels.
    const uint8_t rgb[] = {255, 0, 0, 0, 255, 0, 0, 0, 255, 255, 255, 255};
    FillBox(0, 0, Width - 1, Height - 1, Black);
    VDI_Render_Image(10, 20, 29, 29, rgb, 2, 2);
    Image_s image = ReadImage();
    EXPECT_EQ(image.At(12, 21), RedPx);
    EXPECT_EQ(image.At(27, 21), (Pixel_s{0, 255, 0}));
    EXPECT_EQ(image.At(12, 28), BluePx);
    EXPECT_EQ(image.At(27, 28), WhitePx);
    EXPECT_EQ(image.Count(RedPx), 50);  // a quarter of 20 by 10
    EXPECT_EQ(image.At(9, 21), (Pixel_s{0, 0, 0}));
    EXPECT_EQ(image.At(30, 28), (Pixel_s{0, 0, 0}));
}

// A 3D view over the whole image: X right, Y up, Z towards the viewer from -10 to 10.
void Setup3DView() {
    Gr_Set_Clipping_Mode(ClippingMode_3D);
    GrHW_SetViewport(0, 0, Width - 1, Height - 1);
    Matrix4x4_s projection, modelView;
    Matrix4x4_LoadOrtho(projection, 0, Width, 0, Height, -10, 10);
    Matrix4x4_LoadIdentity(modelView);
    GrHW_Load3DMatrices(projection, modelView);
}

void Quad3D(double x1, double y1, double x2, double y2, double z) {
    GrHW_Vertex3D(x1, y1, z);
    GrHW_Vertex3D(x2, y1, z);
    GrHW_Vertex3D(x2, y2, z);
    GrHW_Vertex3D(x1, y2, z);
}

TEST_F(VDITest, DepthTestScaleAndOffsets) {
    Setup3DView();
    GrHW_ClearDepthBuffer();
    GrHW_EnableDepthTest();
    // Near red first, far blue after: the blue is hidden where they overlap.
    VDI_Set_Fill_Color(Red, false, -1);
    GrHW_BeginSingleColorBlock(BlockType_Quads, PolygonMode_Fill, false, LightingEffect_Paneled);
    Quad3D(10, 10, 30, 30, 1.0);
    GrHW_EndBlock();
    GrHW_BeginMultiColorBlock(BlockType_Quads, PolygonMode_Fill, false, LightingEffect_Paneled, ShadeModel_Flat);
    GrHW_SetMultiColor(Blue);
    Quad3D(20, 20, 40, 40, -1.0);
    GrHW_EndBlock();
    GrHW_DisableDepthTest();
    // (x + 5) * 2: the unit square at 0 lands on 10..12, here without the depth test.
    GrHW_SetOffsets(5, 5, 0);
    GrHW_SetScaleFactors(2, 2, 1);
    VDI_Set_Fill_Color(Green, false, -1);
    GrHW_BeginSingleColorBlock(BlockType_Quads, PolygonMode_Fill, false, LightingEffect_Paneled);
    Quad3D(30, 0, 31, 1, -5.0);
    GrHW_EndBlock();
    GrHW_SetOffsets(0, 0, 0);
    GrHW_SetScaleFactors(1, 1, 1);
    Image_s image = ReadImage();
    // Screen rows run down: Y up from 10 to 30 is rows 50 to 69.
    EXPECT_EQ(image.At(25, Height - 1 - 25), RedPx);
    EXPECT_EQ(image.At(35, Height - 1 - 35), BluePx);
    EXPECT_EQ(image.Count(RedPx), 400);
    EXPECT_EQ(image.Count(BluePx), 400 - 100);
    EXPECT_EQ(image.Count(Pixel_s{0, 255, 0}), 4);
    EXPECT_EQ(image.At(70, Height - 1 - 10), (Pixel_s{0, 255, 0}));
}

TEST_F(VDITest, OneLightAndSurfaceContrast) {
    Setup3DView();
    LightSource_s light;
    light.XYZDirection = XYZ_s{0.0, 0.0, 1.0};  // from the viewer
    light.Intensity = 60.0;
    light.BackgroundLight = 20.0;
    light.IncludeSpecular = false;
    GrHW_Setup3DLighting(light, false);
    VDI_Set_Fill_Color(Red, false, -1);
    GrHW_BeginSingleColorBlock(BlockType_Quads, PolygonMode_Fill, true, LightingEffect_Paneled);
    GrHW_Normal3D(0, 0, 1);
    Quad3D(0, 0, 20, 20, 0.0);
    GrHW_EndBlock();
    // Contrast C: each channel v becomes v * C + 1 - C before lighting.
    GrHW_SetSurfaceColorContrast(0.5);
    GrHW_BeginSingleColorBlock(BlockType_Quads, PolygonMode_Fill, true, LightingEffect_Paneled);
    GrHW_Normal3D(0, 0, 1);
    Quad3D(40, 0, 60, 20, 0.0);
    GrHW_EndBlock();
    GrHW_SetSurfaceColorContrast(1.0);
    Image_s image = ReadImage();
    // ambient 0.2 + diffuse 0.6 * (N . L = 1), times the material colour.
    Pixel_s plain = image.At(10, Height - 10), softened = image.At(50, Height - 10);
    EXPECT_NEAR(plain.R, 0.8 * 255, 1.0);
    EXPECT_EQ(plain.G, 0);
    EXPECT_NEAR(softened.R, 0.8 * 255, 1.0);
    EXPECT_NEAR(softened.G, 0.8 * 0.5 * 255, 1.0);
}

TEST_F(VDITest, SameDrawingTwiceGivesTheSamePixels) {
    auto scene = [] {
        VDI_SetupGraphics();
        FillBox(0, 0, Width - 1, Height - 1, White);
        VDI_Set_Translucency(25);
        std::vector<XY_s> poly = {{3, 70}, {60, 2}, {110, 77}, {50, 40}};
        VDI_PgonConfig(true);
        VDI_Set_Fill_Color(Purple, false, -1);
        SetPolygon(poly);
        VDI_Pgon(true, true);
        VDI_Set_Translucency(0);
        VDI_Set_Line_Style(2.0, LinePattern_DashDot, 9.0, LineCap_Flat, LineJoin_Miter);
        VDI_Set_Line_Color(Cyan, 5, false, -1);
        for (int k = 0; k < 10; k++) Line(k * 7.3, 0.4, Width - k * 5.1, Height - 1.6);
        VDI_Ellipse(XY_s{60, 40}, XY_s{30, 15}, 40, false, true);
        return ReadImage();
    };
    Image_s first = scene();
    Image_s second = scene();
    EXPECT_EQ(first.Rgb, second.Rgb);
    EXPECT_GT(first.Count(WhitePx), 0);
    EXPECT_LT(first.Count(WhitePx), Width * Height);
}

TEST_F(VDITest, StateCacheSkipsRepeatedCalls) {
    uint64_t before = Gr_GetGLStateCallCount();
    VDI_Set_Line_Style(2.0, LinePattern_Dashed, 4.0, LineCap_Flat, LineJoin_Miter);
    uint64_t afterFirst = Gr_GetGLStateCallCount();
    EXPECT_GT(afterFirst, before);
    VDI_Set_Line_Style(2.0, LinePattern_Dashed, 4.0, LineCap_Flat, LineJoin_Miter);
    EXPECT_EQ(Gr_GetGLStateCallCount(), afterFirst);

    VDI_Set_Line_Color(Green, 3, false, -1);
    Line(0, 5, 50, 5);
    uint64_t afterLine = Gr_GetGLStateCallCount();
    VDI_Set_Line_Color(Green, 3, false, -1);
    Line(0, 7, 50, 7);
    Line(0, 9, 50, 9);
    EXPECT_EQ(Gr_GetGLStateCallCount(), afterLine);
    VDI_SetClipping(0, 0, Width - 1, Height - 1, true);
    uint64_t afterClip = Gr_GetGLStateCallCount();
    VDI_SetClipping(0, 0, Width - 1, Height - 1, true);
    EXPECT_EQ(Gr_GetGLStateCallCount(), afterClip);

    // After an invalidation the same values go out again.
    Gr_InvalidateCache();
    VDI_Set_Line_Style(2.0, LinePattern_Dashed, 4.0, LineCap_Flat, LineJoin_Miter);
    uint64_t afterResend = Gr_GetGLStateCallCount();
    EXPECT_GT(afterResend, afterClip);
    VDI_Set_Line_Color(Green, 3, false, -1);
    Line(0, 11, 50, 11);
    EXPECT_GT(Gr_GetGLStateCallCount(), afterResend);
}

TEST_F(VDITest, DisplayListsOnTheWorkArea) {
    UseInteractiveWorkArea();
    FillBox(0, 0, Width - 1, Height - 1, White);
    // In the off-screen destination no list is built.
    DisplayList_s *list = VDI_AllocDisplayList(2);
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(list->NumLists, 2);
    EXPECT_TRUE(VDI_BeginDisplayList(list, 1, false, true, DisplayListMode_BuildAndRun, "DL_TEST"));
    EXPECT_TRUE(Gr_IsBuildingAnyDisplayList());
    FillBox(10, 10, 19, 19, Red);
    VDI_EndDisplayList();
    EXPECT_FALSE(Gr_IsBuildingAnyDisplayList());
    EXPECT_NE(list->Base, 0u);
    EXPECT_FALSE(list->IsEmpty);
    Image_s image = ReadImage();
    EXPECT_EQ(image.Count(RedPx), 100);  // built and run

    FillBox(0, 0, Width - 1, Height - 1, White);
    VDI_CallDisplayList(list, 1, false);
    image = ReadImage();
    EXPECT_EQ(image.Count(RedPx), 100);

    // A line colour set to its previous value is sent again after a list ran, not after one
    // that kept the cache.
    VDI_Set_Fill_Color(Blue, false, -1);
    VDI_Set_Line_Color(Green, 3, false, -1);
    Line(0, 50, 50, 50);
    uint64_t count = Gr_GetGLStateCallCount();
    VDI_CallDisplayList(list, 1, true);
    VDI_Set_Line_Color(Green, 3, false, -1);
    EXPECT_EQ(Gr_GetGLStateCallCount(), count);
    VDI_CallDisplayList(list, 1, false);
    VDI_Set_Line_Color(Green, 3, false, -1);
    Line(0, 52, 50, 52);
    EXPECT_GT(Gr_GetGLStateCallCount(), count);
    image = ReadImage();
    EXPECT_EQ(image.At(20, 52), (Pixel_s{0, 255, 0}));

    // Emptied, the list draws nothing.
    EXPECT_FALSE(VDI_BeginDisplayList(list, 0, false, true, DisplayListMode_Empty, "DL_TEST"));
    EXPECT_TRUE(list->IsEmpty);
    FillBox(0, 0, Width - 1, Height - 1, White);
    VDI_CallDisplayList(list, 1, false);
    EXPECT_EQ(ReadImage().Count(RedPx), 0);

    // Light lists only: a list that is not light draws directly.
    GeneralBase.Interface.CacheLightDisplayListsOnly = true;
    EXPECT_FALSE(VDI_BeginDisplayList(list, 0, false, false, DisplayListMode_BuildAndRun, "DL_TEST"));
    GeneralBase.Interface.CacheLightDisplayListsOnly = false;

    DisplayList_s *child = VDI_AllocDisplayList(1);
    list->Child = child;
    VDI_ReleaseAndDeallocDisplayListArray(&list, 1);
    EXPECT_EQ(list, nullptr);
    EXPECT_EQ(CurrentRenderDest, RenderDest_None);
}

TEST_F(VDITest, XORDrawsWithTheInvertingWhite) {
    UseInteractiveWorkArea();
    FillBox(0, 0, Width - 1, Height - 1, Blue);
    VDI_Set_Write_Mode(WriteMode_XOR);
    FillBox(10, 10, 19, 19, Red);  // any colour becomes index 66
    VDI_Set_Write_Mode(WriteMode_Normal);
    FillBox(30, 10, 39, 19, Red);
    Image_s image = ReadImage();
    EXPECT_EQ(image.At(15, 15), (Pixel_s{255, 255, 0}));
    EXPECT_EQ(image.At(35, 15), RedPx);
}

TEST_F(VDITest, BatchModeSendsNothingForScreenDestinations) {
    VDI_Set_Line_Color(Red, 2, false, -1);
    Pl_SetDevice(PlRecorderDevice());
    PlRecorderClear();
    VDI_SetRenderDest(RenderDest_WorkArea);
    EXPECT_FALSE(VDI_GoesToGr());
    uint64_t count = Gr_GetGLStateCallCount();
    VDI_SetupGraphics();
    VDI_Move_Abs(1, 2);
    VDI_Begin_Path();
    VDI_Line_Abs(50, 60);
    VDI_End_Path(true);
    XY_s current = VDI_GetCurrentPoint();
    EXPECT_EQ(current.X, 50.0);  // only the current point moved
    EXPECT_EQ(current.Y, 60.0);
    FillBox(0, 0, Width - 1, Height - 1, Red);
    VDI_SetClipping(0, 0, 10, 10, true);
    DisplayList_s *list = VDI_AllocDisplayList(1);
    EXPECT_FALSE(VDI_BeginDisplayList(list, 0, false, true, DisplayListMode_BuildAndRun, "DL_TEST"));
    VDI_DeallocDisplayList(&list);
    EXPECT_EQ(list, nullptr);
    EXPECT_EQ(Gr_GetGLStateCallCount(), count);
    EXPECT_TRUE(PlRecorderRecords().empty());
    VDI_SetRenderDest(RenderDest_OffscreenBitmap);
    EXPECT_EQ(ReadImage().Count(WhitePx), Width * Height);

    // Suspended graphics in an interactive run: also nothing.
    UseInteractiveWorkArea();
    GraphicsSuspended = 1;
    count = Gr_GetGLStateCallCount();
    FillBox(0, 0, Width - 1, Height - 1, Red);
    EXPECT_EQ(Gr_GetGLStateCallCount(), count);
    GraphicsSuspended = 0;
    EXPECT_EQ(ReadImage().Count(WhitePx), Width * Height);
}

TEST_F(VDITest, HardcopyGoesToThePlDriverInHardcopyUnits) {
    Pl_SetDevice(PlRecorderDevice());
    PlRecorderClear();
    // x' = 2x + 10, y' = -2y + 500.
    VDI_SetHardcopyMap(CoordMap_s{2.0, 10.0, -2.0, 500.0});
    uint64_t count = Gr_GetGLStateCallCount();
    VDI_SetRenderDest(RenderDest_Hardcopy);
    EXPECT_TRUE(VDI_GoesToPl());
    EXPECT_EQ(*DrawAreaWidth, WorkAreaWidth);
    VDI_Set_Line_Style(1.5, LinePattern_Dashed, 4.0, LineCap_Round, LineJoin_Bevel);
    VDI_Set_Line_Color(Red, 2, false, -1);
    VDI_Begin_Path();
    VDI_Move_Abs(1, 2);
    VDI_Line_Abs(3, 4);
    VDI_End_Path(false);
    VDI_SetClipping(0, 0, 100, 50, true);
    VDI_Rectangle(5, 6, 7, 8, true, false);
    VDI_ResetVert();
    VDI_PushVert(0, 0);
    VDI_PushVert(10, 0);
    VDI_PushVert(10, 10);
    VDI_PushVert(0, 0);
    VDI_Pgon(true, false);
    EXPECT_EQ(Gr_GetGLStateCallCount(), count);

    const std::vector<PlRecord_s> &r = PlRecorderRecords();
    ASSERT_EQ(r.size(), 9u) << PlRecorderDump();
    EXPECT_EQ(r[0].Op, PlOp_Set_Line_Style);
    EXPECT_DOUBLE_EQ(r[0].Value, 3.0);   // thickness scaled
    EXPECT_DOUBLE_EQ(r[0].Value2, 8.0);  // pattern length scaled
    EXPECT_EQ(r[0].Int1, LinePattern_Dashed);
    EXPECT_EQ(r[1].Op, PlOp_Set_Line_Color);
    EXPECT_EQ(r[1].Int1, Red);
    EXPECT_EQ(r[1].Int2, 2);
    EXPECT_EQ(r[1].Rgb.R, 255);
    EXPECT_EQ(r[2].Op, PlOp_Begin_Path);
    EXPECT_EQ(r[3].Op, PlOp_Move_Abs);
    EXPECT_DOUBLE_EQ(r[3].X1, 12.0);
    EXPECT_DOUBLE_EQ(r[3].Y1, 496.0);
    EXPECT_EQ(r[4].Op, PlOp_Line_Abs);
    EXPECT_DOUBLE_EQ(r[4].X1, 16.0);
    EXPECT_DOUBLE_EQ(r[4].Y1, 492.0);
    EXPECT_EQ(r[5].Op, PlOp_End_Path);
    EXPECT_EQ(r[6].Op, PlOp_Set_Clipping);
    EXPECT_DOUBLE_EQ(r[6].X2, 210.0);
    EXPECT_DOUBLE_EQ(r[6].Y2, 400.0);
    EXPECT_EQ(r[7].Op, PlOp_Rectangle);
    EXPECT_DOUBLE_EQ(r[7].X1, 20.0);
    EXPECT_DOUBLE_EQ(r[7].Y2, 484.0);
    EXPECT_TRUE(r[7].Flag1);
    EXPECT_FALSE(r[7].Flag2);
    EXPECT_EQ(r[8].Op, PlOp_Pgon);
    ASSERT_EQ(r[8].Points.size(), 4u);
    EXPECT_DOUBLE_EQ(r[8].Points[2].X, 30.0);
    EXPECT_DOUBLE_EQ(r[8].Points[2].Y, 480.0);
}

TEST_F(VDITest, HardcopyPolygonsAndMetafilePoints) {
    PlDevice_s device = *PlRecorderDevice();
    Pl_SetDevice(&device);
    PlRecorderClear();
    VDI_SetHardcopyMap(CoordMap_s{0.1, 0.0, 0.1, 0.0});
    VDI_SetRenderDest(RenderDest_Hardcopy);
    VDI_ResetVert();
    VDI_PushVert(0, 0);
    VDI_PushVert(100, 0);
    VDI_PushVert(100, 100);
    VDI_PushVert(0, 0);
    VDI_Pgon(true, true);
    ASSERT_EQ(PlRecorderRecords().size(), 1u);
    const PlRecord_s &pgon = PlRecorderRecords()[0];
    EXPECT_EQ(pgon.Op, PlOp_Pgon);
    EXPECT_EQ(pgon.Int1, 4);
    EXPECT_TRUE(pgon.Flag1);
    EXPECT_TRUE(pgon.Flag2);
    EXPECT_DOUBLE_EQ(pgon.Points[1].X, 10.0);
    EXPECT_DOUBLE_EQ(pgon.Points[2].Y, 10.0);

    // A metafile keeps rounded points and drops one that rounds onto the last.
    device.IsMetafile = true;
    device.Uses16BitCoords = true;
    VDI_ResetVert();
    EXPECT_TRUE(VDI_PushVert(10, 10));     // (1, 1)
    EXPECT_FALSE(VDI_PushVert(12, 10));    // (1.2, 1) rounds to (1, 1)
    EXPECT_EQ(NumVert, 1);
    EXPECT_TRUE(VDI_PushVert(16, 10));     // (1.6, 1) rounds to (2, 1)
    EXPECT_TRUE(VDI_PushVert(1e6, -1e6));  // clamped to 16 bits
    EXPECT_EQ(PtsIn[2], 2);
    EXPECT_EQ(PtsIn[4], 16000);
    EXPECT_EQ(PtsIn[5], -16000);
}

TEST_F(VDITest, ProxyCallbacksAndMessages) {
    LogCapture capture;
    RenderDestSizeRegisterCallback(nullptr);
    EXPECT_FALSE(VerifyAllRequiredGRProxyCallbacks());
    EXPECT_NE(capture.Text().find("Err: Error: Required Render Destination Size Callback is not Registered"),
              std::string::npos)
        << capture.Text();
    Gr_RegisterBatchProxyCallbacks();
    EXPECT_TRUE(VerifyAllRequiredGRProxyCallbacks());

    EXPECT_FALSE(Gr_ConstructOffscreenImage(0, 10, ExportRegion_WorkArea));
    EXPECT_NE(capture.Text().find("Error creating off-screen graphics context. Try specifying a smaller image size."),
              std::string::npos)
        << capture.Text();

    EXPECT_FALSE(Gr_OpenGLExtensionSupported(""));
    EXPECT_FALSE(Gr_OpenGLExtensionSupported("GL_ARB_multitexture GL_ARB_imaging"));
    EXPECT_TRUE(Gr_OpenGLExtensionSupported("GL_ARB_multitexture"));
    EXPECT_FALSE(Gr_OpenGLExtensionSupported("GL_ARB_multitex"));  // a part of a word is no match
}

TEST_F(VDITest, InitReadsThePhysicalDisplayFileInBatch) {
    std::string dir = MakeScratchDir("vdi");
    ASSERT_FALSE(dir.empty());
    std::string phy = dir + "/orvanex.phy";
    FILE *file = fopen(phy.c_str(), "w");
    ASSERT_NE(file, nullptr);
    fputs("#!PHY 700\n1024 700 40.5 41.5 0\nlast.lay\n", file);
    fclose(file);
    const char *oldEnv = getenv("ORVPHYFILE");
    std::string savedEnv = oldEnv != nullptr ? oldEnv : "";
    setenv("ORVPHYFILE", phy.c_str(), 1);
    PhysicalDisplay_s savedPhy = PhysicalDisplay;
    double savedDotsX = DotsPerCmX, savedDotsY = DotsPerCmY;
    bool savedInit = GraphicsAreInitialized;

    VDI_SetRenderDest(RenderDest_None);
    ASSERT_TRUE(Gr_Init());
    EXPECT_EQ(WorkAreaWidth, 1024);
    EXPECT_EQ(WorkAreaHeight, 700);
    EXPECT_DOUBLE_EQ(DotsPerCmX, 40.5);
    EXPECT_DOUBLE_EQ(DotsPerCmY, 41.5);
    EXPECT_EQ(PlXPoly.size(), static_cast<size_t>(GeneralBase.MaxPtsInALine + 1));
    EXPECT_EQ(CurrentColorMap[0][Red].R, 255);
    EXPECT_TRUE(GraphicsAreInitialized);

    // A missing file in batch mode is reported and the run goes on.
    {
        LogCapture capture;
        setenv("ORVPHYFILE", (dir + "/none.phy").c_str(), 1);
        EXPECT_TRUE(Gr_Init());
        EXPECT_NE(capture.Text().find("Invalid or Missing orvanex.phy file.  Batch Operation may not work correctly!"),
                  std::string::npos)
            << capture.Text();
    }

    if (oldEnv != nullptr)
        setenv("ORVPHYFILE", savedEnv.c_str(), 1);
    else
        unsetenv("ORVPHYFILE");
    PhysicalDisplay = savedPhy;
    DotsPerCmX = savedDotsX, DotsPerCmY = savedDotsY;
    GraphicsAreInitialized = savedInit;
    RemoveScratchDir(dir);
    // Back to the fixture's destination for the tear-down.
    ASSERT_TRUE(SetRenderDestToOffscreenBitmap());
}

// A look-up that knows every name but one: the loader must refuse it whole.
void DoNothingEntry() {}
void *AllButFinish(const char *name) {
    return strcmp(name, "glFinish") == 0 ? nullptr : reinterpret_cast<void *>(&DoNothingEntry);
}
void *NoneAtAll(const char *) { return nullptr; }

TEST_F(VDITest, OpenGLTableIsFilledFromTheOffscreenContext) {
    // The fixture bound the image, so the table is OSMesa's: the renderer answers through it, and
    // a clear through it reaches the image. Buffer rows run upward: rows 20..24 are picture rows
    // Height-25..Height-21.
    ASSERT_NE(GrGLFunctionsSource(), nullptr);
    const GLubyte *renderer = GrGL.GetString(GL_RENDERER);
    ASSERT_NE(renderer, nullptr);
    EXPECT_GT(strlen(reinterpret_cast<const char *>(renderer)), 0u);
    GrGL.Enable(GL_SCISSOR_TEST);
    GrGL.Scissor(10, 20, 30, 5);
    GrGL.ClearColor(0.0f, 0.0f, 1.0f, 1.0f);
    GrGL.Clear(GL_COLOR_BUFFER_BIT);
    GrGL.Disable(GL_SCISSOR_TEST);
    Gr_InvalidateCache();  // state changed behind the cache
    Image_s image = ReadImage();
    EXPECT_EQ(image.Count(BluePx), 30 * 5);
    EXPECT_EQ(image.At(10, Height - 21), BluePx);
    EXPECT_EQ(image.At(39, Height - 25), BluePx);
    EXPECT_EQ(image.At(40, Height - 25), WhitePx);
    EXPECT_EQ(image.At(10, Height - 26), WhitePx);

    // A table missing one entry is refused whole; the one in use stays.
    GLGetProc_pf source = GrGLFunctionsSource();
    EXPECT_FALSE(GrLoadGLFunctions(AllButFinish));
    EXPECT_FALSE(GrLoadGLFunctions(NoneAtAll));
    EXPECT_FALSE(GrLoadGLFunctions(nullptr));
    EXPECT_EQ(GrGLFunctionsSource(), source);
    EXPECT_STRNE(Gr_GetRendererName(), "");

    // Emptied, the table does nothing although the context is still current: drawing reaches
    // OpenGL only through it.
    GrResetGLFunctions();
    EXPECT_EQ(GrGLFunctionsSource(), nullptr);
    EXPECT_STREQ(Gr_GetRendererName(), "");
    FillBox(0, 0, Width - 1, Height - 1, Red);
    EXPECT_EQ(ReadImage().Count(RedPx), 0);
    // Binding the image again fills it from OSMesa, and drawing works again.
    VDI_SetRenderDest(RenderDest_None);
    ASSERT_TRUE(SetRenderDestToOffscreenBitmap());
    EXPECT_EQ(GrGLFunctionsSource(), source);
    EXPECT_STRNE(Gr_GetRendererName(), "");
    VDI_SetupGraphics();
    FillBox(5, 5, 14, 14, Red);
    EXPECT_EQ(ReadImage().Count(RedPx), 100);
}

TEST_F(VDITest, NewImageStartsAsThePaper) {
    // Leave a red picture and a depth buffer of zeros (nothing could pass the depth test) in the
    // context.
    FillBox(0, 0, Width - 1, Height - 1, Red);
    GrGL.DepthMask(GL_TRUE);
    GrGL.ClearDepth(0.0);
    GrGL.Clear(GL_DEPTH_BUFFER_BIT);
    Gr_InvalidateCache();

    // An opaque cyan paper: a new image of the same size reads cyan everywhere, before anything
    // is drawn; its memory starts as zeros, which would read black.
    GeneralBase.Paper.IsTransparent = false;
    GeneralBase.Paper.BackgroundColor = Cyan;
    const Pixel_s CyanPx{0, 255, 255};
    VDI_SetRenderDest(RenderDest_None);
    ASSERT_TRUE(Gr_ConstructOffscreenImage(Width, Height, ExportRegion_WorkArea));
    ASSERT_TRUE(SetRenderDestToOffscreenBitmap());
    EXPECT_EQ(ReadImage().Count(CyanPx), Width * Height);

    // Depth was cleared to the far plane: a quad at the middle depth passes the test.
    VDI_SetupGraphics();
    Setup3DView();
    GrHW_EnableDepthTest();
    VDI_Set_Fill_Color(Red, false, -1);
    GrHW_BeginSingleColorBlock(BlockType_Quads, PolygonMode_Fill, false, LightingEffect_Paneled);
    Quad3D(0, 0, 10, 10, 0.0);
    GrHW_EndBlock();
    GrHW_DisableDepthTest();
    EXPECT_EQ(ReadImage().Count(RedPx), 100);

    // Binding the same image again keeps what was drawn.
    VDI_SetRenderDest(RenderDest_None);
    ASSERT_TRUE(SetRenderDestToOffscreenBitmap());
    EXPECT_EQ(ReadImage().Count(RedPx), 100);

    // A transparent paper gives white, whatever its colour; another size as well.
    GeneralBase.Paper.IsTransparent = true;
    VDI_SetRenderDest(RenderDest_None);
    ASSERT_TRUE(Gr_ConstructOffscreenImage(37, 23, ExportRegion_WorkArea));
    ASSERT_TRUE(SetRenderDestToOffscreenBitmap());
    EXPECT_EQ(ReadImage().Count(WhitePx), 37 * 23);
}

TEST_F(VDITest, AllSixBatchCallbacksAreRegistered) {
    LogCapture capture;
    // Each one missing in turn is named; the batch set registers all six again.
    struct Missing {
        void (*Unregister)();
        const char *Message;
    };
    const Missing cases[] = {
        {[] { RenderDestRegisterCallback(nullptr); }, "Error: Required Render Destination Callback is not Registered"},
        {[] { RenderDestSizeRegisterCallback(nullptr); },
         "Error: Required Render Destination Size Callback is not Registered"},
        {[] { SwapBuffersRegisterCallback(nullptr); }, "Error: Required Swap Buffers Callback is not Registered"},
        {[] { DotPitchRegisterCallback(nullptr); }, "Error: Required Dot Pitch Callback is not Registered"},
        {[] { KeyStateRegisterCallback(nullptr); }, "Error: Required Key State Callback is not Registered"},
        {[] { MouseButtonStateRegisterCallback(nullptr); },
         "Error: Required Mouse Button State Callback is not Registered"},
    };
    for (const Missing &c : cases) {
        Gr_RegisterBatchProxyCallbacks();
        EXPECT_TRUE(VerifyAllRequiredGRProxyCallbacks());
        c.Unregister();
        EXPECT_FALSE(VerifyAllRequiredGRProxyCallbacks());
        EXPECT_NE(capture.Text().find(std::string("Err: ") + c.Message), std::string::npos) << c.Message;
    }
    Gr_RegisterBatchProxyCallbacks();
    EXPECT_TRUE(VerifyAllRequiredGRProxyCallbacks());

    // Sizes and dot pitch are the physical display's, for every screen destination.
    PhysicalDisplay_s savedPhy = PhysicalDisplay;
    PhysicalDisplay.WorkAreaWidth = 321, PhysicalDisplay.WorkAreaHeight = 123;
    PhysicalDisplay.DotsPerCmX = 12.5, PhysicalDisplay.DotsPerCmY = 13.5;
    int w = 0, h = 0;
    VDI_GetRenderDestSize(RenderDest_WorkArea, &w, &h);
    EXPECT_EQ(w, 321);
    EXPECT_EQ(h, 123);
    int savedExampleW = ExampleColorDrawAreaWidth, savedExampleH = ExampleColorDrawAreaHeight;
    VDI_GetRenderDestSize(RenderDest_ExampleColor, &w, &h);
    EXPECT_EQ(w, 321);
    ExampleColorDrawAreaWidth = savedExampleW, ExampleColorDrawAreaHeight = savedExampleH;
    double dotsX = 0.0, dotsY = 0.0;
    VDI_GetDotPitch(&dotsX, &dotsY);
    EXPECT_EQ(dotsX, 12.5);
    EXPECT_EQ(dotsY, 13.5);
    PhysicalDisplay = savedPhy;
    // No key or button is ever down, and nothing interrupts.
    EXPECT_FALSE(Gr_IsKeyDown(0xffe1));
    Interrupted = false;
    _Gr_CheckInterrupt("Drawing", __FILE__, __LINE__);
    EXPECT_FALSE(Interrupted);

    // Selecting destination 5 binds the image through the callback; a swap changes nothing.
    VDI_SetRenderDest(RenderDest_None);
    VDI_SetRenderDest(RenderDest_OffscreenBitmap);
    VDI_SetupGraphics();
    FillBox(0, 0, 9, 9, Red);
    VDI_SwapBuffers();
    EXPECT_EQ(ReadImage().Count(RedPx), 100);

    // Without an image nothing can be bound: reported, and no destination stays selected.
    VDI_SetRenderDest(RenderDest_None);
    Gr_DestroyOffscreenImage();
    EXPECT_FALSE(SetRenderDestToOffscreenBitmap());
    EXPECT_EQ(CurrentRenderDest, RenderDest_None);
    EXPECT_NE(capture.Text().find("Error creating off-screen graphics context. Try specifying a smaller image size."),
              std::string::npos)
        << capture.Text();
}

}  // namespace
