// Line and fill rate of the device layer into a 1920 x 1080 off-screen image (OSMesa, no display):
// 1,000,000 short lines and 100,000 filled quadrilaterals drawn through VDI_, and the same
// primitives issued as raw OpenGL calls in the same context (the OpenGL calls the layer makes for
// them: one line strip or polygon per primitive, colour changes every 100 primitives), once
// through the layer's table of entry points (glfuncs) and once by name, bound at link time to
// OSMesa. Each pass ends with glFinish, so rasterisation is in the time. Passes alternate, twice
// each, after a warm-up; the best of each is reported with the ratios layer / raw and table / by
// name. All give the same picture, checked by comparing the images (which also shows that the
// calls by name reached the context). Prints the OpenGL renderer that ran.
#include <GL/gl.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "base/kernel/genbase.h"
#include "base/kernel/globals.h"
#include "base/plot/glfuncs.h"
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
    GrGL.Finish();
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
    GrGL.Finish();
    return msSince(start);
}

// The view the layer sets for 2D drawing over the whole image.
void rawSetup2DView() {
    GrGL.Viewport(0, 0, ImageWidth, ImageHeight);
    GrGL.MatrixMode(GL_PROJECTION);
    GrGL.LoadIdentity();
    GrGL.Ortho(0.0, ImageWidth, ImageHeight, 0.0, -1.0, 1.0);
    GrGL.MatrixMode(GL_MODELVIEW);
    GrGL.LoadIdentity();
    GrGL.Disable(GL_SCISSOR_TEST);
    GrGL.LineWidth(1.0f);
}

// The calls of the timed loops, by name or through the table; inline, so that by name stays a
// direct call.
struct ByName_s {
    static void Color3ubv(const GLubyte *rgb) { glColor3ubv(rgb); }
    static void Begin(GLenum mode) { glBegin(mode); }
    static void End() { glEnd(); }
    static void Vertex2f(GLfloat x, GLfloat y) { glVertex2f(x, y); }
    static void Vertex2i(GLint x, GLint y) { glVertex2i(x, y); }
    static void Finish() { glFinish(); }
};
struct ThroughTable_s {
    static void Color3ubv(const GLubyte *rgb) { GrGL.Color3ubv(rgb); }
    static void Begin(GLenum mode) { GrGL.Begin(mode); }
    static void End() { GrGL.End(); }
    static void Vertex2f(GLfloat x, GLfloat y) { GrGL.Vertex2f(x, y); }
    static void Vertex2i(GLint x, GLint y) { GrGL.Vertex2i(x, y); }
    static void Finish() { GrGL.Finish(); }
};

const GLubyte BasicRGB[7][3] = {{0, 0, 0}, {255, 0, 0}, {0, 255, 0}, {0, 0, 255}, {0, 255, 255}, {255, 255, 0}, {255, 0, 255}};

template <typename GL_t>
double rawLines(const std::vector<Segment_s> &segments) {
    clearImage();
    rawSetup2DView();
    auto start = std::chrono::steady_clock::now();
    for (int n = 0; n < NumLines; n++) {
        if (n % PrimitivesPerColour == 0) GL_t::Color3ubv(BasicRGB[(n / PrimitivesPerColour) % 7]);
        const Segment_s &s = segments[n];
        GL_t::Begin(GL_LINE_STRIP);
        GL_t::Vertex2f(s.X1 + 0.375f, s.Y1 + 0.375f);
        GL_t::Vertex2f(s.X2 + 0.375f, s.Y2 + 0.375f);
        GL_t::End();
    }
    GL_t::Finish();
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
    GrGL.Finish();
    return msSince(start);
}

template <typename GL_t>
double rawPolygons(const std::vector<Quad_s> &quads) {
    clearImage();
    rawSetup2DView();
    auto start = std::chrono::steady_clock::now();
    for (int n = 0; n < NumPolygons; n++) {
        if (n % PrimitivesPerColour == 0) GL_t::Color3ubv(BasicRGB[(n / PrimitivesPerColour) % 7]);
        const Quad_s &q = quads[n];
        GL_t::Begin(GL_POLYGON);
        for (int v = 0; v < 4; v++) GL_t::Vertex2i(q.X[v], q.Y[v]);
        GL_t::End();
    }
    GL_t::Finish();
    double ms = msSince(start);
    Gr_InvalidateCache();
    return ms;
}

void report(const char *what, int count, double vdiMs, double tableMs, double byNameMs, bool samePicture) {
    printf("%-9s %8d  layer %8.1f ms (%5.2f M/s)  raw through table %8.1f ms  raw by name %8.1f ms  "
           "layer/raw %.3f  table/by name %.3f  same picture: %s\n",
           what, count, vdiMs, count / vdiMs / 1000.0, tableMs, byNameMs, vdiMs / tableMs, tableMs / byNameMs,
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
    printf("renderer: %s | %s | DISPLAY %s\n", Gr_GetRendererName(), GrGL.GetString(GL_VERSION),
           display != nullptr ? display : "unset");
    printf("image %d x %d\n", ImageWidth, ImageHeight);

    std::vector<Segment_s> segments = makeSegments();
    std::vector<Quad_s> quads = makeQuads();

    // Warm-up: compile the rasteriser's shaders for these states.
    vdiLines(segments);
    rawPolygons<ThroughTable_s>(quads);

    double bestVdiLines = 1e30, bestTableLines = 1e30, bestNameLines = 1e30;
    double bestVdiPolys = 1e30, bestTablePolys = 1e30, bestNamePolys = 1e30;
    bool linesSame = true, polysSame = true;
    for (int pass = 0; pass < 2; pass++) {
        bestVdiLines = std::min(bestVdiLines, vdiLines(segments));
        std::vector<uint8_t> vdiImage = readImage();
        bestTableLines = std::min(bestTableLines, rawLines<ThroughTable_s>(segments));
        linesSame = linesSame && readImage() == vdiImage;
        bestNameLines = std::min(bestNameLines, rawLines<ByName_s>(segments));
        linesSame = linesSame && readImage() == vdiImage;
        bestNamePolys = std::min(bestNamePolys, rawPolygons<ByName_s>(quads));
        std::vector<uint8_t> rawImage = readImage();
        bestTablePolys = std::min(bestTablePolys, rawPolygons<ThroughTable_s>(quads));
        polysSame = polysSame && readImage() == rawImage;
        bestVdiPolys = std::min(bestVdiPolys, vdiPolygons(quads));
        polysSame = polysSame && readImage() == rawImage;
    }
    report("lines", NumLines, bestVdiLines, bestTableLines, bestNameLines, linesSame);
    report("polygons", NumPolygons, bestVdiPolys, bestTablePolys, bestNamePolys, polysSame);

    VDI_SetRenderDest(RenderDest_None);
    Gr_Mopup();
    return linesSame && polysSame ? 0 : 1;
}
