// Line and fill rate of the device layer into a 1920 x 1080 off-screen image (OSMesa, no display):
// 1,000,000 short lines and 100,000 filled quadrilaterals drawn through VDI_, and the same
// primitives issued as raw OpenGL calls in the same context (the OpenGL calls the layer makes for
// them: one line strip or polygon per primitive, colour changes every 100 primitives). Each
// pass ends with glFinish, so rasterisation is in the time. Passes alternate layer and raw, twice
// each, after a warm-up; the best of each is reported with the ratio layer / raw. Both give the
// same picture, checked by comparing the images. Prints the OpenGL renderer that ran.
#include <GL/gl.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "base/kernel/genbase.h"
#include "base/kernel/globals.h"
#include "base/plot/vdi.h"

namespace {

constexpr int ImageWidth = 1920, ImageHeight = 1080;
constexpr int NumLines = 1000000;
constexpr int NumPolygons = 100000;
constexpr int PrimitivesPerColour = 100;

struct Segment_s {
    int X1, Y1, X2, Y2;
};
struct Quad_s {
    int X[4], Y[4];
};

// A fixed pseudo-random sequence, the same for both paths.
uint32_t Seed = 12345;
int nextInt(int range) {
    Seed = Seed * 1664525u + 1013904223u;
    return static_cast<int>((Seed >> 8) % static_cast<uint32_t>(range));
}

std::vector<Segment_s> makeSegments() {
    std::vector<Segment_s> segments(NumLines);
    for (Segment_s &s : segments) {
        s.X1 = nextInt(ImageWidth - 20), s.Y1 = nextInt(ImageHeight - 20);
        s.X2 = s.X1 + 1 + nextInt(12), s.Y2 = s.Y1 + nextInt(12);
    }
    return segments;
}

// Convex quadrilaterals of about 20 pixels.
std::vector<Quad_s> makeQuads() {
    std::vector<Quad_s> quads(NumPolygons);
    for (Quad_s &q : quads) {
        int x = nextInt(ImageWidth - 30), y = nextInt(ImageHeight - 30);
        q.X[0] = x + nextInt(5), q.Y[0] = y + nextInt(5);
        q.X[1] = x + 20 + nextInt(5), q.Y[1] = y + nextInt(5);
        q.X[2] = x + 20 + nextInt(5), q.Y[2] = y + 20 + nextInt(5);
        q.X[3] = x + nextInt(5), q.Y[3] = y + 20 + nextInt(5);
    }
    return quads;
}

double msSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

void clearImage() {
    Gr_ClearDrawArea(RGB_s{255, 255, 255});
    glFinish();
}

std::vector<uint8_t> readImage() {
    std::vector<uint8_t> rgb(static_cast<size_t>(ImageWidth) * ImageHeight * 3);
    Gr_PrepareOffScreenImageForPixelAccess();
    for (int row = 0; row < ImageHeight; row++) Gr_GetRGBPixelRow(row, &rgb[static_cast<size_t>(row) * ImageWidth * 3]);
    return rgb;
}

double vdiLines(const std::vector<Segment_s> &segments) {
    clearImage();
    Gr_InvalidateCache();
    VDI_Set_Line_Style(1.0, LinePattern_Solid, 0.0, LineCap_Flat, LineJoin_Miter);
    auto start = std::chrono::steady_clock::now();
    for (int n = 0; n < NumLines; n++) {
        if (n % PrimitivesPerColour == 0) VDI_Set_Line_Color((n / PrimitivesPerColour) % 7, 1, false, -1);
        const Segment_s &s = segments[n];
        VDI_Begin_Path();
        VDI_Move_Abs(s.X1, s.Y1);
        VDI_Line_Abs(s.X2, s.Y2);
        VDI_End_Path(false);
    }
    glFinish();
    return msSince(start);
}

// The view the layer sets for 2D drawing over the whole image.
void rawSetup2DView() {
    glViewport(0, 0, ImageWidth, ImageHeight);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(0.0, ImageWidth, ImageHeight, 0.0, -1.0, 1.0);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glDisable(GL_SCISSOR_TEST);
}

const GLubyte BasicRGB[7][3] = {{0, 0, 0}, {255, 0, 0}, {0, 255, 0}, {0, 0, 255}, {0, 255, 255}, {255, 255, 0}, {255, 0, 255}};

double rawLines(const std::vector<Segment_s> &segments) {
    clearImage();
    rawSetup2DView();
    glLineWidth(1.0f);
    auto start = std::chrono::steady_clock::now();
    for (int n = 0; n < NumLines; n++) {
        if (n % PrimitivesPerColour == 0) glColor3ubv(BasicRGB[(n / PrimitivesPerColour) % 7]);
        const Segment_s &s = segments[n];
        glBegin(GL_LINE_STRIP);
        glVertex2f(s.X1 + 0.375f, s.Y1 + 0.375f);
        glVertex2f(s.X2 + 0.375f, s.Y2 + 0.375f);
        glEnd();
    }
    glFinish();
    double ms = msSince(start);
    Gr_InvalidateCache();
    return ms;
}

double vdiPolygons(const std::vector<Quad_s> &quads) {
    clearImage();
    Gr_InvalidateCache();
    VDI_PgonConfig(false);
    auto start = std::chrono::steady_clock::now();
    for (int n = 0; n < NumPolygons; n++) {
        if (n % PrimitivesPerColour == 0) VDI_Set_Fill_Color((n / PrimitivesPerColour) % 7, false, -1);
        const Quad_s &q = quads[n];
        VDI_ResetVert();
        for (int v = 0; v < 4; v++) VDI_PushVert(q.X[v], q.Y[v]);
        VDI_PushVert(q.X[0], q.Y[0]);
        VDI_Pgon(true, false);
    }
    glFinish();
    return msSince(start);
}

double rawPolygons(const std::vector<Quad_s> &quads) {
    clearImage();
    rawSetup2DView();
    auto start = std::chrono::steady_clock::now();
    for (int n = 0; n < NumPolygons; n++) {
        if (n % PrimitivesPerColour == 0) glColor3ubv(BasicRGB[(n / PrimitivesPerColour) % 7]);
        const Quad_s &q = quads[n];
        glBegin(GL_POLYGON);
        for (int v = 0; v < 4; v++) glVertex2i(q.X[v], q.Y[v]);
        glEnd();
    }
    glFinish();
    double ms = msSince(start);
    Gr_InvalidateCache();
    return ms;
}

void report(const char *what, int count, double vdiMs, double rawMs, bool samePicture) {
    printf("%-9s %8d  layer %9.1f ms (%6.2f M/s)   raw %9.1f ms (%6.2f M/s)   layer/raw %.3f   same picture: %s\n",
           what, count, vdiMs, count / vdiMs / 1000.0, rawMs, count / rawMs / 1000.0, vdiMs / rawMs,
           samePicture ? "yes" : "NO");
}

}  // namespace

int main() {
    InBatchMode = true;
    Gr_RegisterBatchProxyCallbacks();
    if (!VDI_AllocPolygonBuffers() || !Gr_AllocColorTables()) return 1;
    Gr_InstallColorMap(0);
    if (!Gr_ConstructOffscreenImage(ImageWidth, ImageHeight, ExportRegion_WorkArea) ||
        !SetRenderDestToOffscreenBitmap())
        return 1;
    VDI_SetupGraphics();
    VDI_SetClipping(0, 0, ImageWidth - 1, ImageHeight - 1, true);
    const char *display = getenv("DISPLAY");
    printf("renderer: %s | %s | DISPLAY %s\n", Gr_GetRendererName(), glGetString(GL_VERSION),
           display != nullptr ? display : "unset");
    printf("image %d x %d\n", ImageWidth, ImageHeight);

    std::vector<Segment_s> segments = makeSegments();
    std::vector<Quad_s> quads = makeQuads();

    // Warm-up: compile the rasteriser's shaders for these states.
    vdiLines(segments);
    rawPolygons(quads);

    double bestVdiLines = 1e30, bestRawLines = 1e30, bestVdiPolys = 1e30, bestRawPolys = 1e30;
    bool linesSame = true, polysSame = true;
    for (int pass = 0; pass < 2; pass++) {
        bestVdiLines = std::min(bestVdiLines, vdiLines(segments));
        std::vector<uint8_t> vdiImage = readImage();
        bestRawLines = std::min(bestRawLines, rawLines(segments));
        linesSame = linesSame && readImage() == vdiImage;
        bestRawPolys = std::min(bestRawPolys, rawPolygons(quads));
        std::vector<uint8_t> rawImage = readImage();
        bestVdiPolys = std::min(bestVdiPolys, vdiPolygons(quads));
        polysSame = polysSame && readImage() == rawImage;
    }
    report("lines", NumLines, bestVdiLines, bestRawLines, linesSame);
    report("polygons", NumPolygons, bestVdiPolys, bestRawPolys, polysSame);

    VDI_SetRenderDest(RenderDest_None);
    Gr_Mopup();
    return linesSame && polysSame ? 0 : 1;
}
