// The OpenGL back end: state cache, blocks, 2D primitives, views, lighting, display lists,
// buffers and the OSMesa off-screen image.
#include "base/plot/grhw.h"

#include <GL/gl.h>
#include <GL/glu.h>
#include <GL/osmesa.h>

#include <dlfcn.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>
#include <type_traits>
#include <vector>

#include "base/kernel/errors.h"
#include "base/kernel/globals.h"
#include "base/plot/glfuncs.h"
#include "base/plot/grcolor.h"

#if defined(__SANITIZE_ADDRESS__)
// OSMesa keeps the framebuffers it makes for each image format in a list of its own that no
// call frees; leak reports about them say nothing about this program.
extern "C" const char *__lsan_default_suppressions() { return "leak:libOSMesa.so\n"; }
#endif

RenderDest_e CurrentRenderDest = RenderDest_None;
int ExampleTextDrawAreaWidth = 0, ExampleTextDrawAreaHeight = 0;
int ExampleLightSourcePositionDrawAreaWidth = 0, ExampleLightSourcePositionDrawAreaHeight = 0;
int ExampleColorMapDrawAreaWidth = 0, ExampleColorMapDrawAreaHeight = 0;
int ExampleColorDrawAreaWidth = 0, ExampleColorDrawAreaHeight = 0;
int OffscreenDrawAreaWidth = 0, OffscreenDrawAreaHeight = 0;
int *DrawAreaWidth = nullptr, *DrawAreaHeight = nullptr;

GrContext_s GrContext;

namespace {

constexpr const char *OffscreenContextMessage =
    "Error creating off-screen graphics context.\nTry specifying a smaller image size.";

uint64_t GLStateCalls = 0;

// Every OpenGL call that changes state goes through this, so the tests can count them.
#define GLSTATE(call)      \
    do {                   \
        ++GLStateCalls;    \
        call;              \
    } while (0)

// A colour choice: a table index with its colour map group, or an RGB (Index -1).
struct ColorChoice_s {
    int Index = 0;
    int Group = 0;
    RGB_s Rgb{0, 0, 0};
};

// What the callers asked for last; unlike GrContext this is never unknown, so a block drawn
// after an invalidation still gets its colour.
struct Requested_s {
    ColorChoice_s Line, Fill{7, 0, {255, 255, 255}};
    double Thickness = 1.0;
    LinePattern_e Pattern = LinePattern_Solid;
    double PatternLength = 0.0;
    bool Precise = false;
    WriteMode_e WriteMode = WriteMode_Normal;
    ClippingMode_e ClippingMode = ClippingMode_2D;
    int Clip[4] = {0, 0, 0, 0};
    bool ClipSet = false;
};
Requested_s Req;

// The OpenGL side: the open block and the caches of state sent.
struct HWState_s {
    bool BlockOpen = false;
    bool PrimitiveBegun = false;
    GLenum Primitive = GL_POINTS;
    bool CentreVertices = false;  // line-type block: integer vertices on pixel centres
    bool SkipRepeats = false;     // polygon-type block: a vertex equal to the last is dropped
    bool IsLit = false;
    int NumVerts = 0;
    double LastX = 0.0, LastY = 0.0, LastZ = 0.0;

    int PolygonMode = -1, ShadeModel = -1, Lighting = -1;
    bool ColorValid = false;
    GLfloat Color[4] = {0, 0, 0, 0};
    bool ColorWasMaterial = false;
    int BlendMode = -1;  // 0 off, 1 alpha, 2 inverting
    int DepthTest = -1, DepthWrite = -1, PolygonOffsetOn = -1, Scissor = -1, Stipple = -1;
    double PolygonOffsetFactor = -1.0;
    GLfloat LineWidth = -1.0f;
    GLushort StippleBits = 0;
    GLint StippleFactor = -1;
    bool View2DValid = false;
    int View2D[4] = {0, 0, 0, 0};
    int ViewportBox[4] = {-1, -1, -1, -1};
    int ScissorBox[4] = {-1, -1, -1, -1};
    int DrawBuffer[7] = {-1, -1, -1, -1, -1, -1, -1};

    // Settings rather than caches.
    double Alpha = 1.0;
    double Contrast = 1.0;
    double Lift = 0.0;
    const ThreeDView_s *LiftView = nullptr;
    const ThreeDViewCalc_s *LiftCalc = nullptr;
    double Scale[3] = {1.0, 1.0, 1.0};
    double Offset[3] = {0.0, 0.0, 0.0};
};
HWState_s HW;
HWState_s SavedHW;

struct ListBuild_s {
    DisplayList_s *List = nullptr;
    GLuint Name = 0;
    bool DeferredCall = false;
};
ListBuild_s Building;

struct Offscreen_s {
    OSMesaContext Context = nullptr;
    std::vector<uint8_t> Buffer;
    int Width = 0, Height = 0;
    bool IsNew = false;  // constructed and not yet cleared to the paper
};
Offscreen_s Offscreen;

// The off-screen library, opened on first use: it brings a compiler with it whose loading would
// otherwise cost every run, drawing or not, tens of milliseconds.
struct OSMesaLibrary_s {
    bool Tried = false;
    void *Handle = nullptr;
    decltype(&::OSMesaCreateContextExt) CreateContextExt = nullptr;
    decltype(&::OSMesaMakeCurrent) MakeCurrent = nullptr;
    decltype(&::OSMesaGetCurrentContext) GetCurrentContext = nullptr;
    decltype(&::OSMesaGetIntegerv) GetIntegerv = nullptr;
    decltype(&::OSMesaDestroyContext) DestroyContext = nullptr;
    decltype(&::OSMesaGetProcAddress) GetProcAddress = nullptr;
};
OSMesaLibrary_s OSMesa;

bool loadOSMesa() {
    if (OSMesa.Tried) return OSMesa.Handle != nullptr;
    OSMesa.Tried = true;
    for (const char *name : {"libOSMesa.so.8", "libOSMesa.so"})
        if ((OSMesa.Handle = dlopen(name, RTLD_NOW | RTLD_LOCAL)) != nullptr) break;
    if (OSMesa.Handle == nullptr) return false;
    auto find = [](auto *pointer, const char *symbol) {
        *pointer = reinterpret_cast<std::remove_reference_t<decltype(*pointer)>>(dlsym(OSMesa.Handle, symbol));
        return *pointer != nullptr;
    };
    bool ok = find(&OSMesa.CreateContextExt, "OSMesaCreateContextExt") && find(&OSMesa.MakeCurrent, "OSMesaMakeCurrent") &&
              find(&OSMesa.GetCurrentContext, "OSMesaGetCurrentContext") &&
              find(&OSMesa.GetIntegerv, "OSMesaGetIntegerv") && find(&OSMesa.DestroyContext, "OSMesaDestroyContext") &&
              find(&OSMesa.GetProcAddress, "OSMesaGetProcAddress");
    if (!ok) {
        dlclose(OSMesa.Handle);
        OSMesa.Handle = nullptr;
    }
    return ok;
}

// A context of the off-screen library, or null if the library or a context cannot be had.
OSMesaContext createOffscreenContext() {
    return loadOSMesa() ? OSMesa.CreateContextExt(OSMESA_RGBA, 24, 0, 0, nullptr) : nullptr;
}

// The look-up of the off-screen library, in the form the table loader takes.
void *offscreenGetProc(const char *name) {
    return loadOSMesa() ? reinterpret_cast<void *>(OSMesa.GetProcAddress(name)) : nullptr;
}

// Finishes what was drawn into the image and lets the context go, before the memory is freed.
void releaseOffscreenContext() {
    if (Offscreen.Context == nullptr || OSMesa.GetCurrentContext() != Offscreen.Context) return;
    GrHW_EndBlock();
    GrGL.Finish();
    OSMesa.MakeCurrent(nullptr, nullptr, 0, 0, 0);
}

// The largest image the off-screen renderer takes, asked once of a context made current on a
// one-pixel buffer; 0, 0 if no context can be had.
void maxOffscreenSize(int *width, int *height) {
    static int maxWidth = -1, maxHeight = -1;
    if (maxWidth < 0) {
        maxWidth = maxHeight = 0;
        if (Offscreen.Context == nullptr) Offscreen.Context = createOffscreenContext();
        uint8_t pixel[4];
        if (Offscreen.Context != nullptr && OSMesa.MakeCurrent(Offscreen.Context, pixel, GL_UNSIGNED_BYTE, 1, 1)) {
            GLint value = 0;
            OSMesa.GetIntegerv(OSMESA_MAX_WIDTH, &value);
            maxWidth = value;
            OSMesa.GetIntegerv(OSMESA_MAX_HEIGHT, &value);
            maxHeight = value;
            OSMesa.MakeCurrent(nullptr, nullptr, 0, 0, 0);
        }
    }
    *width = maxWidth;
    *height = maxHeight;
}

// What an image shows before anything is drawn: the paper's colour, white for a transparent
// paper.
RGB_s paperColor() {
    const Paper_s &paper = GeneralBase.Paper;
    if (paper.IsTransparent || paper.BackgroundColor < 0 || paper.BackgroundColor >= NumBasicColors)
        return RGB_s{255, 255, 255};
    return GeneralBase.BasicColor[paper.BackgroundColor];
}

// Clears colour and depth of the whole image. The context may come from an earlier image with
// the scissor on or depth writes off, and the caches need not know it: the state is set outright
// and the caches told.
void clearNewImage(RGB_s rgb) {
    GrGL.Disable(GL_SCISSOR_TEST);
    GrGL.DepthMask(GL_TRUE);
    GrGL.ClearColor(rgb.R / 255.0f, rgb.G / 255.0f, rgb.B / 255.0f, 1.0f);
    GrGL.ClearDepth(1.0);
    GrGL.Clear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    HW.Scissor = 0;
    HW.DepthWrite = 1;
}

struct DirectExport_s {
    bool Active = false;
    int Width = 0, Height = 0, OffsetX = 0, OffsetY = 0;
    std::vector<uint8_t> Row;
};
DirectExport_s DirectExport;

GLUtesselator *Tessellator = nullptr;
std::vector<double> TessCombined;  // x, y pairs made by the combine callback
bool TessFailed = false;

// Line and point vertices sit a little above and left of the pixel centre: a segment then
// leaves the diamond of its first pixel through an edge, never a corner, so the diamond-exit
// rule sets its first pixel and not its last in every direction.
constexpr GLfloat LineVertexOffset = 0.375f;

int roundToDot(double v) { return static_cast<int>(v >= 0.0 ? v + 0.499 : v - 0.499); }

int destWidth() { return DrawAreaWidth != nullptr ? *DrawAreaWidth : 0; }
int destHeight() { return DrawAreaHeight != nullptr ? *DrawAreaHeight : 0; }

bool isScreenDest(RenderDest_e dest) { return dest <= RenderDest_ExampleColor; }

RGB_s resolveChoice(const ColorChoice_s &choice) {
    if (Req.WriteMode == WriteMode_XOR) return RGB_s{255, 255, 255};  // index 66 of every table
    if (choice.Index < 0) return choice.Rgb;
    int group = choice.Group >= 0 && choice.Group < NumColorMapGroups ? choice.Group : 0;
    const std::vector<RGB_s> &table = CurrentColorMap[group];
    if (static_cast<size_t>(choice.Index) >= table.size()) return RGB_s{0, 0, 0};
    return table[choice.Index];
}

void sendColor(RGB_s rgb) {
    GLfloat c[4] = {rgb.R / 255.0f, rgb.G / 255.0f, rgb.B / 255.0f, static_cast<GLfloat>(HW.Alpha)};
    if (HW.IsLit && HW.Contrast != 1.0)
        for (int k = 0; k < 3; k++) c[k] = static_cast<GLfloat>(c[k] * HW.Contrast + 1.0 - HW.Contrast);
    bool asMaterial = HW.IsLit && !Gr_RenderingConfig().UseGLColorMaterialFunction;
    if (HW.ColorValid && asMaterial == HW.ColorWasMaterial && memcmp(c, HW.Color, sizeof(c)) == 0) return;
    if (asMaterial)
        GLSTATE(GrGL.Materialfv(GL_FRONT_AND_BACK, GL_AMBIENT_AND_DIFFUSE, c));
    else
        GLSTATE(GrGL.Color4fv(c));
    memcpy(HW.Color, c, sizeof(c));
    HW.ColorValid = true;
    HW.ColorWasMaterial = asMaterial;
}

void setEnable(int &cached, bool on, GLenum cap) {
    if (cached == (on ? 1 : 0)) return;
    if (on)
        GLSTATE(GrGL.Enable(cap));
    else
        GLSTATE(GrGL.Disable(cap));
    cached = on ? 1 : 0;
}

void applyBlend() {
    int wanted = Req.WriteMode == WriteMode_XOR ? 2 : (HW.Alpha < 1.0 ? 1 : 0);
    if (wanted == HW.BlendMode) return;
    if (wanted == 0) {
        GLSTATE(GrGL.Disable(GL_BLEND));
    } else {
        if (HW.BlendMode <= 0) GLSTATE(GrGL.Enable(GL_BLEND));
        if (wanted == 1)
            GLSTATE(GrGL.BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA));
        else
            GLSTATE(GrGL.BlendFunc(GL_ONE_MINUS_DST_COLOR, GL_ZERO));
    }
    HW.BlendMode = wanted;
    HW.ColorValid = false;  // the alpha sent with colours changed
}

bool stippleSolidLines() {
    int mode = Gr_RenderingConfig().StippleAllLines;
    return mode == 0 || (mode == 1 && Req.Precise);
}

void applyLineStyle() {
    GLfloat width = static_cast<GLfloat>(std::max(1, roundToDot(Req.Thickness)));
    if (width != HW.LineWidth) {
        GLSTATE(GrGL.LineWidth(width));
        HW.LineWidth = width;
    }
    uint16_t bits = 0xFFFF;
    int factor = 1;
    bool patterned = Gr_LineStipple(Req.Pattern, Req.PatternLength, &bits, &factor);
    bool stipple = patterned || stippleSolidLines();
    setEnable(HW.Stipple, stipple, GL_LINE_STIPPLE);
    if (stipple && (bits != HW.StippleBits || factor != HW.StippleFactor)) {
        GLSTATE(GrGL.LineStipple(factor, bits));
        HW.StippleBits = bits;
        HW.StippleFactor = factor;
    }
}

void setPolygonMode(PolygonMode_e mode) {
    if (HW.PolygonMode == mode) return;
    static const GLenum modes[] = {GL_FILL, GL_LINE, GL_POINT};
    GLSTATE(GrGL.PolygonMode(GL_FRONT_AND_BACK, modes[mode]));
    HW.PolygonMode = mode;
}

void setShadeModel(ShadeModel_e model) {
    if (HW.ShadeModel == model) return;
    GLSTATE(GrGL.ShadeModel(model == ShadeModel_Smooth ? GL_SMOOTH : GL_FLAT));
    HW.ShadeModel = model;
}

bool isPolygonType(BlockType_e type) { return type >= BlockType_Triangles; }

// Opens a block; the primitive itself begins on the first vertex.
void openBlock(BlockType_e type, PolygonMode_e mode, bool lighting) {
    if (HW.BlockOpen) GrHW_EndBlock();
    GLenum primitive = type;
    if (type == BlockType_Polygon && mode != PolygonMode_Fill) {
        primitive = GL_LINE_LOOP;
    } else if (isPolygonType(type)) {
        setPolygonMode(mode);
    }
    setEnable(HW.Lighting, lighting, GL_LIGHTING);
    HW.IsLit = lighting;
    HW.Primitive = primitive;
    HW.CentreVertices = primitive <= GL_LINE_STRIP;
    HW.SkipRepeats = primitive == GL_POLYGON || primitive == GL_LINE_LOOP;
    HW.BlockOpen = true;
    HW.PrimitiveBegun = false;
    HW.NumVerts = 0;
}

void beginPrimitiveIfNeeded() {
    if (!HW.PrimitiveBegun) {
        GrGL.Begin(HW.Primitive);
        HW.PrimitiveBegun = true;
    }
}

bool sameAsLast(double x, double y, double z) {
    return HW.SkipRepeats && HW.NumVerts > 0 && x == HW.LastX && y == HW.LastY && z == HW.LastZ;
}

void remember(double x, double y, double z) {
    HW.LastX = x, HW.LastY = y, HW.LastZ = z;
    HW.NumVerts++;
}

// ---- the tessellator ------------------------------------------------------------------------

// Vertex data passed to the tessellator: index + 1 into the polygon's arrays, or minus (index +
// 1) into TessCombined.
const double *TessX = nullptr;
const double *TessY = nullptr;

void GLAPIENTRY tessBegin(GLenum type) { GrGL.Begin(type); }
void GLAPIENTRY tessEnd() { GrGL.End(); }
void GLAPIENTRY tessError(GLenum) { TessFailed = true; }
void GLAPIENTRY tessVertex(void *data) {
    intptr_t id = reinterpret_cast<intptr_t>(data);
    if (id > 0)
        GrGL.Vertex2d(TessX[id - 1], TessY[id - 1]);
    else
        GrGL.Vertex2d(TessCombined[2 * (-id - 1)], TessCombined[2 * (-id - 1) + 1]);
}
// Where edges cross the tessellator makes a vertex; it joins the polygon's vertices.
void GLAPIENTRY tessCombine(GLdouble coords[3], void *[4], GLfloat[4], void **out) {
    TessCombined.push_back(coords[0]);
    TessCombined.push_back(coords[1]);
    *out = reinterpret_cast<void *>(-static_cast<intptr_t>(TessCombined.size() / 2));
}

bool ensureTessellator() {
    if (Tessellator != nullptr) return true;
    Tessellator = gluNewTess();
    if (Tessellator == nullptr) return false;
    gluTessCallback(Tessellator, GLU_TESS_BEGIN, reinterpret_cast<_GLUfuncptr>(tessBegin));
    gluTessCallback(Tessellator, GLU_TESS_END, reinterpret_cast<_GLUfuncptr>(tessEnd));
    gluTessCallback(Tessellator, GLU_TESS_VERTEX, reinterpret_cast<_GLUfuncptr>(tessVertex));
    gluTessCallback(Tessellator, GLU_TESS_ERROR, reinterpret_cast<_GLUfuncptr>(tessError));
    gluTessCallback(Tessellator, GLU_TESS_COMBINE, reinterpret_cast<_GLUfuncptr>(tessCombine));
    gluTessProperty(Tessellator, GLU_TESS_WINDING_RULE, GLU_TESS_WINDING_ODD);
    gluTessNormal(Tessellator, 0.0, 0.0, 1.0);
    return true;
}

void tessellate(const double *x, const double *y, int numVert) {
    if (!ensureTessellator()) return;
    TessX = x, TessY = y;
    TessCombined.clear();
    TessFailed = false;
    gluTessBeginPolygon(Tessellator, nullptr);
    gluTessBeginContour(Tessellator);
    for (int v = 0; v < numVert; v++) {
        GLdouble coords[3] = {x[v], y[v], 0.0};
        gluTessVertex(Tessellator, coords, reinterpret_cast<void *>(static_cast<intptr_t>(v + 1)));
    }
    gluTessEndContour(Tessellator);
    gluTessEndPolygon(Tessellator);
    TessX = TessY = nullptr;
}

// The list and everything it owns: its child chain, and theirs.
template <typename Visit_f>
void walkListTree(DisplayList_s *list, Visit_f visit) {
    if (list == nullptr) return;
    visit(list);
    for (DisplayList_s *child = list->Child; child != nullptr; child = child->Next) walkListTree(child, visit);
}

// Draws in 2D unless the caller chose a clipping mode since the cache was last invalidated.
void ensure2DView() {
    if (GrContext.ClippingMode == ClippingMode_Invalid) Gr_Set_Clipping_Mode(ClippingMode_2D);
}

}  // namespace

// ---- destinations ---------------------------------------------------------------------------------

int *Gr_DestWidthVariable(RenderDest_e dest) {
    switch (dest) {
        case RenderDest_WorkArea:
        case RenderDest_Hardcopy: return &WorkAreaWidth;
        case RenderDest_ExampleText: return &ExampleTextDrawAreaWidth;
        case RenderDest_ExampleLightSourcePosition: return &ExampleLightSourcePositionDrawAreaWidth;
        case RenderDest_ExampleColorMap: return &ExampleColorMapDrawAreaWidth;
        case RenderDest_ExampleColor: return &ExampleColorDrawAreaWidth;
        case RenderDest_OffscreenBitmap: return &OffscreenDrawAreaWidth;
        default: return nullptr;
    }
}

int *Gr_DestHeightVariable(RenderDest_e dest) {
    switch (dest) {
        case RenderDest_WorkArea:
        case RenderDest_Hardcopy: return &WorkAreaHeight;
        case RenderDest_ExampleText: return &ExampleTextDrawAreaHeight;
        case RenderDest_ExampleLightSourcePosition: return &ExampleLightSourcePositionDrawAreaHeight;
        case RenderDest_ExampleColorMap: return &ExampleColorMapDrawAreaHeight;
        case RenderDest_ExampleColor: return &ExampleColorDrawAreaHeight;
        case RenderDest_OffscreenBitmap: return &OffscreenDrawAreaHeight;
        default: return nullptr;
    }
}

const OpenGLRendering_s &Gr_RenderingConfig() {
    const OpenGLConfig_s &config = GeneralBase.Interface.OpenGLConfig;
    return CurrentRenderDest == RenderDest_OffscreenBitmap ? config.ImageRendering : config.ScreenRendering;
}

// ---- state ----------------------------------------------------------------------------------------

void Gr_InvalidateCache() {
    GrContext = GrContext_s();
    Req.Precise = false;
    GrHW_ResetGrHWContext();
}

void Gr_ResetForNewDestination() {
    Req.ClipSet = false;
    Req.ClippingMode = ClippingMode_2D;
    Req.WriteMode = WriteMode_Normal;
    Gr_InvalidateCache();
}

bool Gr_LineStipple(LinePattern_e pattern, double length, uint16_t *stipple, int *factor) {
    *factor = 1;
    // Above 12 pixels the 8-pixel form of the pattern is stretched.
    auto stretched = [&](uint16_t bits) {
        *stipple = bits;
        if (length >= 12.0) *factor = static_cast<int>(length / 8.0 + 0.499);
    };
    switch (pattern) {
        case LinePattern_Dashed:
            *stipple = length < 1.5 ? 0x5555 : length < 3.0 ? 0x3333 : length < 6.0 ? 0x0F0F : 0x00FF;
            if (*stipple == 0x00FF) stretched(0x00FF);
            return true;
        case LinePattern_DashDot:
            *stipple = length < 3.0 ? 0x5555 : length < 6.0 ? 0x2727 : 0x18FF;
            if (*stipple == 0x18FF) stretched(0x18FF);
            return true;
        case LinePattern_Dotted:
            if (length < 12.0)
                *stipple = 0x5555;
            else if (length < 24.0)
                *stipple = 0x1111;
            else if (length < 48.0)
                *stipple = 0x0101;
            else {
                *stipple = 0x0001;
                if (length >= 96.0) *factor = static_cast<int>(length / 64.0 + 0.499);
            }
            return true;
        case LinePattern_LongDash:
            *stipple = length < 1.5 ? 0x5555 : length < 3.0 ? 0x7777 : length < 6.0 ? 0x3F3F : 0x0FFF;
            if (*stipple == 0x0FFF) stretched(0x0FFF);
            return true;
        case LinePattern_DashDotDot:
            *stipple = length < 3.0 ? 0x5555 : length < 6.0 ? 0x5757 : 0x24FF;
            if (*stipple == 0x24FF) stretched(0x24FF);
            return true;
        default: *stipple = 0xFFFF; return false;
    }
}

void Gr_Set_Line_Color(int color, int group) {
    if (Req.WriteMode == WriteMode_XOR) color = XORColorIndex;
    if (GrContext.LineColor == color && GrContext.LineColorGroup == group) return;
    GrContext.LineColor = color, GrContext.LineColorGroup = group;
    GrContext.LineRGB = RGB_s{-1, -1, -1};
    Req.Line = ColorChoice_s{color, group, RGB_s{0, 0, 0}};
}

void Gr_Set_Fill_Color(int color, int group) {
    if (Req.WriteMode == WriteMode_XOR) color = XORColorIndex;
    if (GrContext.FillColor == color && GrContext.FillColorGroup == group) return;
    GrContext.FillColor = color, GrContext.FillColorGroup = group;
    GrContext.FillRGB = RGB_s{-1, -1, -1};
    Req.Fill = ColorChoice_s{color, group, RGB_s{0, 0, 0}};
}

void Gr_Set_Line_ColorRGB(RGB_s rgb) {
    if (GrContext.LineColor == -1 && GrContext.LineRGB.R == rgb.R && GrContext.LineRGB.G == rgb.G &&
        GrContext.LineRGB.B == rgb.B)
        return;
    GrContext.LineColor = -1, GrContext.LineColorGroup = -1, GrContext.LineRGB = rgb;
    Req.Line = ColorChoice_s{-1, -1, rgb};
}

void Gr_Set_Fill_ColorRGB(RGB_s rgb) {
    if (GrContext.FillColor == -1 && GrContext.FillRGB.R == rgb.R && GrContext.FillRGB.G == rgb.G &&
        GrContext.FillRGB.B == rgb.B)
        return;
    GrContext.FillColor = -1, GrContext.FillColorGroup = -1, GrContext.FillRGB = rgb;
    Req.Fill = ColorChoice_s{-1, -1, rgb};
}

void Gr_Set_Line_Style(double thickness, LinePattern_e pattern, double patternLength, LineCap_e cap,
                       LineJoin_e join) {
    if (GrContext.LineThickness == thickness && GrContext.LinePattern == pattern &&
        GrContext.PatternLength == patternLength && GrContext.LineCap == cap && GrContext.LineJoin == join)
        return;
    GrContext.LineThickness = thickness, GrContext.LinePattern = pattern, GrContext.PatternLength = patternLength;
    GrContext.LineCap = cap, GrContext.LineJoin = join;
    Req.Thickness = thickness, Req.Pattern = pattern, Req.PatternLength = patternLength;
    applyLineStyle();
}

void Gr_Set_Line_Mode(bool precise) {
    if (GrContext.LineMode == (precise ? 1 : 0)) return;
    GrContext.LineMode = precise ? 1 : 0;
    Req.Precise = precise;
    applyLineStyle();
}

bool Gr_DoExtraDrawForLastPixel() { return Req.Precise && Gr_RenderingConfig().DoExtraDrawForLastPixel; }

void Gr_Set_Fill_Pattern(FillPat_e pattern) { GrContext.FillPattern = pattern; }

void Gr_Set_Translucency(int percent) {
    percent = std::clamp(percent, 0, 100);
    if (GrContext.Translucency == percent) return;
    GrContext.Translucency = percent;
    HW.Alpha = (100 - percent) / 100.0;
    applyBlend();
}

void Gr_Set_Write_Mode(WriteMode_e mode) {
    // XOR is for rubber bands on the screen only.
    if (mode == WriteMode_XOR && !isScreenDest(CurrentRenderDest)) mode = WriteMode_Normal;
    if (GrContext.WriteMode == mode) return;
    GrContext.WriteMode = mode;
    Req.WriteMode = mode;
    HW.ColorValid = false;
    applyBlend();
}

void Gr_Set_Clipping_Mode(ClippingMode_e mode) {
    if (GrContext.ClippingMode == mode) return;
    GrContext.ClippingMode = mode;
    Req.ClippingMode = mode;
    if (mode == ClippingMode_3D) {
        GrHW_Invalidate2DView();
        return;
    }
    int x1 = Req.Clip[0], y1 = Req.Clip[1], x2 = Req.Clip[2], y2 = Req.Clip[3];
    if (!Req.ClipSet) x1 = 0, y1 = 0, x2 = destWidth() - 1, y2 = destHeight() - 1;
    if (mode == ClippingMode_2DScissor || Gr_RenderingConfig().ConstantlyUseScissoring)
        GrHW_SetScissor(x1, y1, x2, y2);
    else
        GrHW_DisableScissor();
    GrHW_Setup2DView(x1, y1, x2, y2);
}

void Gr_Set_Clipping(double x1, double y1, double x2, double y2, bool toWorkArea, bool force) {
    if (toWorkArea) {
        double maxX = destWidth() - 1, maxY = destHeight() - 1;
        x1 = std::clamp(x1, 0.0, maxX), x2 = std::clamp(x2, 0.0, maxX);
        y1 = std::clamp(y1, 0.0, maxY), y2 = std::clamp(y2, 0.0, maxY);
    }
    int ix1 = roundToDot(std::min(x1, x2)), ix2 = roundToDot(std::max(x1, x2));
    int iy1 = roundToDot(std::min(y1, y2)), iy2 = roundToDot(std::max(y1, y2));
    if (!force && GrContext.ClipX1 == ix1 && GrContext.ClipY1 == iy1 && GrContext.ClipX2 == ix2 &&
        GrContext.ClipY2 == iy2)
        return;
    GrContext.ClipX1 = ix1, GrContext.ClipY1 = iy1, GrContext.ClipX2 = ix2, GrContext.ClipY2 = iy2;
    Req.Clip[0] = ix1, Req.Clip[1] = iy1, Req.Clip[2] = ix2, Req.Clip[3] = iy2;
    Req.ClipSet = true;
    // The new rectangle takes effect through the clipping mode.
    ClippingMode_e mode = Req.ClippingMode;
    GrContext.ClippingMode = ClippingMode_Invalid;
    Gr_Set_Clipping_Mode(mode);
}

void Gr_GetCurClipRectangle(int *x1, int *y1, int *x2, int *y2) {
    if (Req.ClipSet) {
        *x1 = Req.Clip[0], *y1 = Req.Clip[1], *x2 = Req.Clip[2], *y2 = Req.Clip[3];
    } else {
        *x1 = 0, *y1 = 0, *x2 = destWidth() - 1, *y2 = destHeight() - 1;
    }
}

// ---- 2D primitives --------------------------------------------------------------------------------

void Gr_Begin_LinePath() {
    GrHW_BeginSingleColorBlock(BlockType_LineStrip, PolygonMode_Line, false, LightingEffect_Paneled);
}
void Gr_LinePath_Vertex(int x, int y) { GrHW_Vertex2D(x, y); }
void Gr_End_LinePath() { GrHW_EndBlock(); }

void Gr_Pgon(const double *x, const double *y, int numVert, bool fill, bool outline, bool isComplex,
             int fillOffsetX, int fillOffsetY) {
    if (numVert < 2 || (!fill && !outline)) return;
    if (fill && numVert >= 4) {
        Gr_Set_Clipping_Mode(ClippingMode_2D);
        int numFill = numVert - 1;  // the closing vertex is not sent again
        static std::vector<double> fx, fy;  // kept between calls: drawing is on the main thread only
        fx.resize(numFill), fy.resize(numFill);
        for (int v = 0; v < numFill; v++) {
            fx[v] = roundToDot(x[v]) + fillOffsetX;
            fy[v] = roundToDot(y[v]) + fillOffsetY;
        }
        if (isComplex) {
            GrHW_EndBlock();
            setPolygonMode(PolygonMode_Fill);
            setEnable(HW.Lighting, false, GL_LIGHTING);
            HW.IsLit = false;
            sendColor(resolveChoice(Req.Fill));
            tessellate(fx.data(), fy.data(), numFill);
        } else {
            BlockType_e type =
                Gr_RenderingConfig().TriangulateFilledPolygons ? BlockType_TriangleFan : BlockType_Polygon;
            GrHW_BeginSingleColorBlock(type, PolygonMode_Fill, false, LightingEffect_Paneled);
            for (int v = 0; v < numFill; v++) GrHW_Vertex2D(static_cast<int>(fx[v]), static_cast<int>(fy[v]));
            GrHW_EndBlock();
        }
    }
    if (outline) {
        ensure2DView();
        GrHW_BeginSingleColorBlock(BlockType_LineStrip, PolygonMode_Line, false, LightingEffect_Paneled);
        for (int v = 0; v < numVert; v++) GrHW_Vertex2D(roundToDot(x[v]), roundToDot(y[v]));
        GrHW_EndBlock();
    }
}

void Gr_Rectangle(int x1, int y1, int x2, int y2, bool outline, bool fill) {
    if (!outline && !fill) return;
    ensure2DView();
    if (x2 < x1) std::swap(x1, x2);
    if (y2 < y1) std::swap(y1, y2);
    if (x2 - x1 < 1.414216 && y2 - y1 < 1.414216) {
        bool useFill = fill && !outline;
        const ColorChoice_s saved = Req.Line;
        if (useFill) Req.Line = Req.Fill;
        GrHW_BeginSingleColorBlock(BlockType_Points, PolygonMode_Point, false, LightingEffect_Paneled);
        GrHW_Vertex2D(roundToDot((x1 + x2) / 2.0), roundToDot((y1 + y2) / 2.0));
        GrHW_EndBlock();
        Req.Line = saved;
        return;
    }
    if (fill) {
        if (outline)
            GrHW_Rectangle(x1, y1, x2, y2, PolygonMode_Fill);
        else
            GrHW_Rectangle(x1, y1, x2 + 1, y2 + 1, PolygonMode_Fill);
    }
    if (outline) GrHW_Rectangle(x1, y1, x2, y2, PolygonMode_Line);
}

void Gr_Draw_Image(int x1, int y1, int x2, int y2, const uint8_t *rgb, int width, int height) {
    if (rgb == nullptr || width <= 0 || height <= 0) return;
    GrHW_EndBlock();
    ensure2DView();
    if (x2 < x1) std::swap(x1, x2);
    if (y2 < y1) std::swap(y1, y2);
    int tileSize = std::max(64, Gr_RenderingConfig().MaxTextureSize);
    GLuint texture = 0;
    GrGL.GenTextures(1, &texture);
    GrGL.BindTexture(GL_TEXTURE_2D, texture);
    GrGL.TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    GrGL.TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    GrGL.TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    GrGL.TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    GrGL.PixelStorei(GL_UNPACK_ALIGNMENT, 1);
    GrGL.PixelStorei(GL_UNPACK_ROW_LENGTH, width);
    GrGL.Enable(GL_TEXTURE_2D);
    setEnable(HW.Lighting, false, GL_LIGHTING);
    HW.IsLit = false;
    sendColor(RGB_s{255, 255, 255});
    GrGL.TexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_REPLACE);
    double pixelW = double(x2 + 1 - x1) / width, pixelH = double(y2 + 1 - y1) / height;
    for (int ty = 0; ty < height; ty += tileSize) {
        for (int tx = 0; tx < width; tx += tileSize) {
            int tw = std::min(tileSize, width - tx), th = std::min(tileSize, height - ty);
            GrGL.PixelStorei(GL_UNPACK_SKIP_PIXELS, tx);
            GrGL.PixelStorei(GL_UNPACK_SKIP_ROWS, ty);
            GrGL.TexImage2D(GL_TEXTURE_2D, 0, GL_RGB, tw, th, 0, GL_RGB, GL_UNSIGNED_BYTE, rgb);
            double sx1 = x1 + tx * pixelW, sx2 = x1 + (tx + tw) * pixelW;
            double sy1 = y1 + ty * pixelH, sy2 = y1 + (ty + th) * pixelH;
            // Row 0 of the image is its top, at the small screen Y.
            GrGL.Begin(GL_QUADS);
            GrGL.TexCoord2d(0, 0), GrGL.Vertex2d(sx1, sy1);
            GrGL.TexCoord2d(1, 0), GrGL.Vertex2d(sx2, sy1);
            GrGL.TexCoord2d(1, 1), GrGL.Vertex2d(sx2, sy2);
            GrGL.TexCoord2d(0, 1), GrGL.Vertex2d(sx1, sy2);
            GrGL.End();
        }
    }
    GrGL.PixelStorei(GL_UNPACK_ROW_LENGTH, 0);
    GrGL.PixelStorei(GL_UNPACK_SKIP_PIXELS, 0);
    GrGL.PixelStorei(GL_UNPACK_SKIP_ROWS, 0);
    GrGL.Disable(GL_TEXTURE_2D);
    GrGL.BindTexture(GL_TEXTURE_2D, 0);
    GrGL.DeleteTextures(1, &texture);
    HW.ColorValid = false;
}

// ---- display lists --------------------------------------------------------------------------------

bool Gr_BeginDisplayList(DisplayList_s *list, int offset, bool compileAndExecute, bool deferredCall) {
    if (list == nullptr || offset < 0 || offset >= std::max(1, list->NumLists) || Building.List != nullptr)
        return false;
    GrHW_EndBlock();
    if (list->Base == 0) {
        list->NumLists = std::max(1, list->NumLists);
        list->Base = GrGL.GenLists(list->NumLists);
        if (list->Base == 0) return false;
    }
    Building.List = list;
    Building.Name = list->Base + offset;
    Building.DeferredCall = deferredCall && !compileAndExecute;
    GrGL.NewList(Building.Name, compileAndExecute ? GL_COMPILE_AND_EXECUTE : GL_COMPILE);
    list->IsBuilt = true;
    list->IsEmpty = false;
    list->IsBeingCalled = true;
    return true;
}

void Gr_EndDisplayList() {
    if (Building.List == nullptr) return;
    GrHW_EndBlock();
    GrGL.EndList();
    DisplayList_s *list = Building.List;
    GLuint name = Building.Name;
    bool deferred = Building.DeferredCall;
    Building = ListBuild_s();
    list->IsBeingCalled = false;
    if (deferred) {
        GrGL.CallList(name);
        Gr_InvalidateCache();
    }
    GrGL.Flush();
}

bool Gr_IsBuildingAnyDisplayList() { return Building.List != nullptr; }
DisplayList_s *Gr_BuildingDisplayList() { return Building.List; }

void Gr_CallDisplayList(DisplayList_s *list, int offset, bool keepCache) {
    if (list == nullptr || list->Base == 0) return;
    GrHW_EndBlock();
    list->IsBeingCalled = true;
    GrGL.CallList(list->Base + offset);
    list->IsBeingCalled = false;
    if (!keepCache) Gr_InvalidateCache();
}

void Gr_EmptyDisplayList(DisplayList_s *list) {
    walkListTree(list, [](DisplayList_s *node) {
        if (node->Base != 0 && !node->IsEmpty) {
            for (int n = 0; n < node->NumLists; n++) {
                GrGL.NewList(node->Base + n, GL_COMPILE);
                GrGL.EndList();
            }
        }
        node->IsEmpty = true;
        node->IsValid = false;
        node->IsPartiallyDrawn = false;
    });
}

void Gr_ReleaseDisplayList(DisplayList_s *list) {
    walkListTree(list, [](DisplayList_s *node) {
        if (node->Base != 0) GrGL.DeleteLists(node->Base, node->NumLists);
        node->Base = 0;
        node->IsBuilt = false;
        node->IsEmpty = true;
        node->IsValid = false;
    });
}

// ---- GrHW -----------------------------------------------------------------------------------------

void GrHW_BeginSingleColorBlock(BlockType_e type, PolygonMode_e mode, bool lighting, LightingEffect_e effect) {
    openBlock(type, mode, lighting);
    if (lighting) setShadeModel(effect == LightingEffect_Paneled ? ShadeModel_Flat : ShadeModel_Smooth);
    bool filled = isPolygonType(type) && mode == PolygonMode_Fill;
    sendColor(resolveChoice(filled ? Req.Fill : Req.Line));
}

void GrHW_BeginMultiColorBlock(BlockType_e type, PolygonMode_e mode, bool lighting, LightingEffect_e effect,
                               ShadeModel_e shadeModel) {
    openBlock(type, mode, lighting);
    setShadeModel(lighting && effect == LightingEffect_Paneled ? ShadeModel_Flat : shadeModel);
}

void GrHW_BeginNoColorBlock(BlockType_e type, PolygonMode_e mode) { openBlock(type, mode, false); }

void GrHW_SetMultiColor(int index) {
    sendColor(resolveChoice(ColorChoice_s{index, Gr_GetColorMapGroup(), RGB_s{0, 0, 0}}));
}

void GrHW_SetMultiColorRGB(RGB_s rgb) { sendColor(resolveChoice(ColorChoice_s{-1, -1, rgb})); }

void GrHW_Vertex3D(double x, double y, double z) {
    if (!HW.BlockOpen) return;
    if (HW.Lift != 0.0 && HW.LiftView != nullptr && HW.LiftCalc != nullptr) {
        XYZ_s lifted = VDI3D_PerspectiveLiftXYZ(*HW.LiftView, *HW.LiftCalc, XYZ_s{x, y, z}, HW.Lift);
        x = lifted.X, y = lifted.Y, z = lifted.Z;
    }
    x = (x + HW.Offset[0]) * HW.Scale[0];
    y = (y + HW.Offset[1]) * HW.Scale[1];
    z = (z + HW.Offset[2]) * HW.Scale[2];
    if (sameAsLast(x, y, z)) return;
    beginPrimitiveIfNeeded();
    if (Building.List != nullptr && !GeneralBase.Interface.UseDoubleForDisplayLists)
        GrGL.Vertex3f(static_cast<GLfloat>(x), static_cast<GLfloat>(y), static_cast<GLfloat>(z));
    else
        GrGL.Vertex3d(x, y, z);
    remember(x, y, z);
}

void GrHW_Normal3D(double x, double y, double z) {
    if (Building.List != nullptr && !GeneralBase.Interface.UseDoubleForDisplayLists)
        GrGL.Normal3f(static_cast<GLfloat>(x), static_cast<GLfloat>(y), static_cast<GLfloat>(z));
    else
        GrGL.Normal3d(x, y, z);
}

void GrHW_Vertex2D(int i, int j) {
    if (!HW.BlockOpen) return;
    if (sameAsLast(i, j, 0.0)) return;
    beginPrimitiveIfNeeded();
    if (HW.CentreVertices)
        GrGL.Vertex2f(i + LineVertexOffset, j + LineVertexOffset);
    else
        GrGL.Vertex2i(i, j);
    remember(i, j, 0.0);
}

void GrHW_EndBlock() {
    if (!HW.BlockOpen) return;
    if (HW.PrimitiveBegun) GrGL.End();
    HW.BlockOpen = false;
    HW.PrimitiveBegun = false;
}

void GrHW_FlushBlockCache() { GrHW_EndBlock(); }
bool GrHW_IsBlockOpen() { return HW.BlockOpen; }
int GrHW_NumVerticesInBlock() { return HW.NumVerts; }

void GrHW_Rectangle(int i1, int j1, int i2, int j2, PolygonMode_e mode) {
    if (mode == PolygonMode_Fill) {
        GrHW_BeginSingleColorBlock(BlockType_Quads, PolygonMode_Fill, false, LightingEffect_Paneled);
        GrHW_Vertex2D(i1, j1);
        GrHW_Vertex2D(i2, j1);
        GrHW_Vertex2D(i2, j2);
        GrHW_Vertex2D(i1, j2);
    } else {
        GrHW_BeginSingleColorBlock(BlockType_LineLoop, PolygonMode_Line, false, LightingEffect_Paneled);
        GrHW_Vertex2D(i1, j1);
        GrHW_Vertex2D(i2, j1);
        GrHW_Vertex2D(i2, j2);
        GrHW_Vertex2D(i1, j2);
    }
    GrHW_EndBlock();
}

void GrHW_SetViewport(int x1, int y1, int x2, int y2) {
    int box[4] = {x1, destHeight() - 1 - y2, x2 - x1 + 1, y2 - y1 + 1};
    if (memcmp(box, HW.ViewportBox, sizeof(box)) == 0) return;
    GrHW_EndBlock();
    GLSTATE(GrGL.Viewport(box[0], box[1], box[2], box[3]));
    memcpy(HW.ViewportBox, box, sizeof(box));
    HW.View2DValid = false;
}

void GrHW_SetScissor(int x1, int y1, int x2, int y2) {
    setEnable(HW.Scissor, true, GL_SCISSOR_TEST);
    int box[4] = {x1, destHeight() - 1 - y2, x2 - x1 + 1, y2 - y1 + 1};
    if (memcmp(box, HW.ScissorBox, sizeof(box)) == 0) return;
    GLSTATE(GrGL.Scissor(box[0], box[1], box[2], box[3]));
    memcpy(HW.ScissorBox, box, sizeof(box));
}

void GrHW_DisableScissor() { setEnable(HW.Scissor, false, GL_SCISSOR_TEST); }

void GrHW_Setup2DView(int x1, int y1, int x2, int y2) {
    int view[4] = {x1, y1, x2, y2};
    if (HW.View2DValid && memcmp(view, HW.View2D, sizeof(view)) == 0) return;
    GrHW_EndBlock();
    GrHW_SetViewport(x1, y1, x2, y2);
    GLSTATE(GrGL.MatrixMode(GL_PROJECTION));
    GLSTATE(GrGL.LoadIdentity());
    // Screen X right and Y down; the edges of the pixels of the rectangle on its borders.
    GLSTATE(GrGL.Ortho(x1, x2 + 1.0, y2 + 1.0, y1, -1.0, 1.0));
    GLSTATE(GrGL.MatrixMode(GL_MODELVIEW));
    GLSTATE(GrGL.LoadIdentity());
    setEnable(HW.DepthTest, false, GL_DEPTH_TEST);
    memcpy(HW.View2D, view, sizeof(view));
    HW.View2DValid = true;
}

void GrHW_Invalidate2DView() { HW.View2DValid = false; }

void GrHW_Load3DMatrices(const Matrix4x4_s &projection, const Matrix4x4_s &modelView) {
    GrHW_EndBlock();
    GLdouble m[16];
    auto load = [&m](const Matrix4x4_s &matrix) {
        for (int row = 0; row < 4; row++)
            for (int col = 0; col < 4; col++) m[col * 4 + row] = matrix.M[row][col];
        GrGL.LoadMatrixd(m);
    };
    GLSTATE(GrGL.MatrixMode(GL_PROJECTION));
    GLSTATE(load(projection));
    GLSTATE(GrGL.MatrixMode(GL_MODELVIEW));
    GLSTATE(load(modelView));
    HW.View2DValid = false;
}

void GrHW_Setup3DLighting(const LightSource_s &light, bool oddNegativeScaleFactors) {
    GrHW_EndBlock();
    GLfloat zero[4] = {0.0f, 0.0f, 0.0f, 1.0f};
    GLfloat ambient = static_cast<GLfloat>(light.BackgroundLight / 100.0);
    GLfloat diffuse = static_cast<GLfloat>(light.Intensity / 100.0);
    GLfloat ambientColor[4] = {ambient, ambient, ambient, 1.0f};
    GLfloat diffuseColor[4] = {diffuse, diffuse, diffuse, 1.0f};
    GLfloat specular[4] = {1.0f, 1.0f, 1.0f, 1.0f};
    // The light comes from the viewer's side: X and Y of the frame's direction turned over.
    GLfloat direction[4] = {static_cast<GLfloat>(-light.XYZDirection.X), static_cast<GLfloat>(-light.XYZDirection.Y),
                            static_cast<GLfloat>(light.XYZDirection.Z), 0.0f};
    GLSTATE(GrGL.MatrixMode(GL_MODELVIEW));
    GLSTATE(GrGL.PushMatrix());
    GLSTATE(GrGL.LoadIdentity());
    GLSTATE(GrGL.Lightfv(GL_LIGHT0, GL_POSITION, direction));
    GLSTATE(GrGL.PopMatrix());
    GLSTATE(GrGL.LightModelfv(GL_LIGHT_MODEL_AMBIENT, zero));
    GLSTATE(GrGL.LightModeli(GL_LIGHT_MODEL_TWO_SIDE, GL_TRUE));
    GLSTATE(GrGL.Lightfv(GL_LIGHT0, GL_AMBIENT, ambientColor));
    GLSTATE(GrGL.Lightfv(GL_LIGHT0, GL_DIFFUSE, diffuseColor));
    GLSTATE(GrGL.Lightfv(GL_LIGHT0, GL_SPECULAR, specular));
    GLSTATE(GrGL.Enable(GL_LIGHT0));
    if (light.IncludeSpecular) {
        GLfloat s = static_cast<GLfloat>(light.SpecularIntensity / 100.0);
        GLfloat materialSpecular[4] = {s, s, s, 1.0f};
        GLSTATE(GrGL.Materialfv(GL_FRONT_AND_BACK, GL_SPECULAR, materialSpecular));
        GLSTATE(GrGL.Materialf(GL_FRONT_AND_BACK, GL_SHININESS,
                            static_cast<GLfloat>(std::clamp(light.SpecularShininess, 0.0, 128.0))));
    } else {
        GLSTATE(GrGL.Materialfv(GL_FRONT_AND_BACK, GL_SPECULAR, zero));
    }
    if (Gr_RenderingConfig().UseGLColorMaterialFunction) {
        GLSTATE(GrGL.ColorMaterial(GL_FRONT_AND_BACK, GL_AMBIENT_AND_DIFFUSE));
        GLSTATE(GrGL.Enable(GL_COLOR_MATERIAL));
    } else {
        GLSTATE(GrGL.Disable(GL_COLOR_MATERIAL));
    }
    GLSTATE(GrGL.FrontFace(oddNegativeScaleFactors ? GL_CW : GL_CCW));
    GrHW_SetPolygonOffset(1.0);
    HW.ColorValid = false;
}

void GrHW_SetTranslucencyFraction(double alpha) {
    HW.Alpha = std::clamp(alpha, 0.0, 1.0);
    HW.ColorValid = false;
    applyBlend();
}

void GrHW_SetSurfaceColorContrast(double contrast) {
    HW.Contrast = std::clamp(contrast, 0.0, 1.0);
    HW.ColorValid = false;
}

void GrHW_SetPerspectiveLift(double lift, const ThreeDView_s *view, const ThreeDViewCalc_s *calc) {
    HW.Lift = lift;
    HW.LiftView = view;
    HW.LiftCalc = calc;
}

void GrHW_SetScaleFactors(double x, double y, double z) { HW.Scale[0] = x, HW.Scale[1] = y, HW.Scale[2] = z; }
void GrHW_SetOffsets(double x, double y, double z) { HW.Offset[0] = x, HW.Offset[1] = y, HW.Offset[2] = z; }

void GrHW_EnableDepthTest() {
    GrHW_EndBlock();
    setEnable(HW.DepthTest, true, GL_DEPTH_TEST);
}
void GrHW_DisableDepthTest() {
    GrHW_EndBlock();
    setEnable(HW.DepthTest, false, GL_DEPTH_TEST);
}
void GrHW_EnableDepthWrite() {
    GrHW_EndBlock();
    if (HW.DepthWrite == 1) return;
    GLSTATE(GrGL.DepthMask(GL_TRUE));
    HW.DepthWrite = 1;
}
void GrHW_DisableDepthWrite() {
    GrHW_EndBlock();
    if (HW.DepthWrite == 0) return;
    GLSTATE(GrGL.DepthMask(GL_FALSE));
    HW.DepthWrite = 0;
}
void GrHW_ClearDepthBuffer() {
    GrHW_EndBlock();
    GrHW_EnableDepthWrite();
    GLSTATE(GrGL.ClearDepth(1.0));
    GrGL.Clear(GL_DEPTH_BUFFER_BIT);
}
void GrHW_EnablePolygonOffset() {
    GrHW_EndBlock();
    setEnable(HW.PolygonOffsetOn, true, GL_POLYGON_OFFSET_FILL);
}
void GrHW_DisablePolygonOffset() {
    GrHW_EndBlock();
    setEnable(HW.PolygonOffsetOn, false, GL_POLYGON_OFFSET_FILL);
}
void GrHW_SetPolygonOffset(double factor) {
    if (HW.PolygonOffsetFactor == factor) return;
    GrHW_EndBlock();
    double bias = Gr_RenderingConfig().PolygonOffsetExtBiasFactor;
    GLSTATE(GrGL.PolygonOffset(static_cast<GLfloat>(factor), static_cast<GLfloat>(factor * bias)));
    HW.PolygonOffsetFactor = factor;
}

void GrHW_ForceColorResend() { HW.ColorValid = false; }
void GrHW_InvalidateColorCache() { HW.ColorValid = false; }

void GrHW_ResetGrHWContext() {
    GrHW_EndBlock();
    HWState_s fresh;
    // The settings stay; only what was sent becomes unknown.
    fresh.Alpha = HW.Alpha, fresh.Contrast = HW.Contrast;
    fresh.Lift = HW.Lift, fresh.LiftView = HW.LiftView, fresh.LiftCalc = HW.LiftCalc;
    memcpy(fresh.Scale, HW.Scale, sizeof(HW.Scale));
    memcpy(fresh.Offset, HW.Offset, sizeof(HW.Offset));
    HW = fresh;
}

void GrHW_SaveContext() {
    GrHW_EndBlock();
    SavedHW = HW;
}

void GrHW_RestoreContext() {
    GrHW_EndBlock();
    HW = SavedHW;
    // What was drawn in between may have changed any state: keep the settings, resend the rest.
    GrHW_ResetGrHWContext();
    applyBlend();
}

// ---- buffers and the off-screen image -------------------------------------------------------------

bool Gr_ConstructOffscreenImage(int width, int height, ExportRegion_e) {
    if (width <= 0 || height <= 0) {
        ErrMsg("%s", OffscreenContextMessage);
        return false;
    }
    // The context must not draw into memory that is given back.
    releaseOffscreenContext();
    int maxWidth, maxHeight;
    maxOffscreenSize(&maxWidth, &maxHeight);
    if (width > maxWidth || height > maxHeight) {
        ErrMsg("An image of %d by %d pixels is too large.  The largest image is %d by %d pixels.", width, height,
               maxWidth, maxHeight);
        return false;
    }
    try {
        Offscreen.Buffer.assign(static_cast<size_t>(width) * static_cast<size_t>(height) * 4, 0);
    } catch (const std::bad_alloc &) {
        Offscreen.Buffer = std::vector<uint8_t>();
        ErrMsg("%s", OffscreenContextMessage);
        return false;
    }
    Offscreen.Width = width, Offscreen.Height = height;
    Offscreen.IsNew = true;
    OffscreenDrawAreaWidth = width, OffscreenDrawAreaHeight = height;
    return true;
}

bool Gr_MakeOffscreenCurrent() {
    if (Offscreen.Buffer.empty()) {
        ErrMsg("%s", OffscreenContextMessage);
        return false;
    }
    if (Offscreen.Context == nullptr) {
        Offscreen.Context = createOffscreenContext();
        if (Offscreen.Context == nullptr) {
            ErrMsg("%s", OffscreenContextMessage);
            return false;
        }
    }
    // A primitive still open belongs to the context that is current now.
    GrHW_EndBlock();
    if (!OSMesa.MakeCurrent(Offscreen.Context, Offscreen.Buffer.data(), GL_UNSIGNED_BYTE, Offscreen.Width,
                           Offscreen.Height)) {
        ErrMsg("%s", OffscreenContextMessage);
        return false;
    }
    // From here on every OpenGL call must reach OSMesa's context.
    if (GrGLFunctionsSource() != offscreenGetProc && !GrLoadGLFunctions(offscreenGetProc)) {
        ErrMsg("%s", OffscreenContextMessage);
        return false;
    }
    // The memory of a new image holds nothing defined; it starts as the paper.
    if (Offscreen.IsNew) {
        clearNewImage(paperColor());
        Offscreen.IsNew = false;
    }
    return true;
}

bool Gr_IsOffscreenImageReady() { return !Offscreen.Buffer.empty(); }

bool Gr_PrepareOffScreenImageForPixelAccess() {
    if (DirectExport.Active) return true;
    if (Offscreen.Buffer.empty() || Offscreen.Context == nullptr) return false;
    GrHW_EndBlock();
    GrGL.Finish();
    return true;
}

bool Gr_GetRGBPixelRow(int row, uint8_t *rgb) {
    if (DirectExport.Active) {
        if (row < 0 || row >= DirectExport.Height) return false;
        GrGL.ReadBuffer(GL_FRONT);
        GrGL.PixelStorei(GL_PACK_ALIGNMENT, 1);
        GrGL.ReadPixels(DirectExport.OffsetX, WorkAreaHeight - 1 - DirectExport.OffsetY - row, DirectExport.Width, 1,
                     GL_RGB, GL_UNSIGNED_BYTE, DirectExport.Row.data());
        memcpy(rgb, DirectExport.Row.data(), DirectExport.Row.size());
        return true;
    }
    if (row < 0 || row >= Offscreen.Height || Offscreen.Buffer.empty()) return false;
    // The memory image keeps OpenGL's order: its first row is the bottom of the picture.
    const uint8_t *source =
        Offscreen.Buffer.data() + static_cast<size_t>(Offscreen.Height - 1 - row) * Offscreen.Width * 4;
    for (int x = 0; x < Offscreen.Width; x++) {
        rgb[3 * x] = source[4 * x];
        rgb[3 * x + 1] = source[4 * x + 1];
        rgb[3 * x + 2] = source[4 * x + 2];
    }
    return true;
}

void Gr_DestroyOffscreenImage() {
    releaseOffscreenContext();
    Offscreen.Buffer = std::vector<uint8_t>();
    Offscreen.Width = Offscreen.Height = 0;
    Offscreen.IsNew = false;
    OffscreenDrawAreaWidth = OffscreenDrawAreaHeight = 0;
}

bool Gr_SetupDirectScreenExport(int width, int height, ExportRegion_e, int offsetX, int offsetY) {
    if (width <= 0 || height <= 0) return false;
    DirectExport.Row.assign(static_cast<size_t>(width) * 3, 0);
    DirectExport.Width = width, DirectExport.Height = height;
    DirectExport.OffsetX = offsetX, DirectExport.OffsetY = offsetY;
    DirectExport.Active = true;
    return true;
}

void Gr_MopupDirectScreenExport() { DirectExport = DirectExport_s(); }

void Gr_BackBuffer() {
    if (!isScreenDest(CurrentRenderDest) || !GeneralBase.Interface.UseDoubleBuffering) return;
    int &cached = HW.DrawBuffer[CurrentRenderDest];
    if (cached == GL_BACK) return;
    GrHW_EndBlock();
    GLSTATE(GrGL.DrawBuffer(GL_BACK));
    GrGL.Finish();
    cached = GL_BACK;
}

void Gr_FrontBuffer() {
    if (!isScreenDest(CurrentRenderDest) || !GeneralBase.Interface.UseDoubleBuffering) return;
    GLenum wanted = GeneralBase.Interface.OpenGLConfig.IncludeBackBufferDuringFrontBufferDraws ? GL_FRONT_AND_BACK
                                                                                              : GL_FRONT;
    int &cached = HW.DrawBuffer[CurrentRenderDest];
    if (cached == static_cast<int>(wanted)) return;
    GrHW_EndBlock();
    GLSTATE(GrGL.DrawBuffer(wanted));
    cached = static_cast<int>(wanted);
}

void Gr_FlushGraphics(bool finish) {
    GrHW_EndBlock();
    if (finish)
        GrGL.Finish();
    else
        GrGL.Flush();
}

void Gr_CopyFrontToBackingStore() {
    if (!GeneralBase.Interface.UseDoubleBuffering) return;
    GrHW_EndBlock();
    GrGL.ReadBuffer(GL_FRONT);
    GrGL.DrawBuffer(GL_BACK);
    GrGL.RasterPos2i(0, 0);
    GrGL.CopyPixels(0, 0, destWidth(), destHeight(), GL_COLOR);
    Gr_InvalidateCache();
}

void Gr_CopyBackingStoreToFront() {
    if (!GeneralBase.Interface.UseDoubleBuffering) return;
    GrHW_EndBlock();
    GrGL.ReadBuffer(GL_BACK);
    GrGL.DrawBuffer(GL_FRONT);
    GrGL.RasterPos2i(0, 0);
    GrGL.CopyPixels(0, 0, destWidth(), destHeight(), GL_COLOR);
    Gr_InvalidateCache();
}

void Gr_ClearDrawArea(RGB_s rgb) {
    GrHW_EndBlock();
    GrHW_DisableScissor();
    GrGL.ClearColor(rgb.R / 255.0f, rgb.G / 255.0f, rgb.B / 255.0f, 1.0f);
    GrHW_EnableDepthWrite();
    GrGL.ClearDepth(1.0);
    GrGL.Clear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    // The scissor returns with the next clipping request.
    GrContext.ClippingMode = ClippingMode_Invalid;
}

const char *Gr_GetRendererName() {
    const GLubyte *name = GrGL.GetString(GL_RENDERER);
    return name != nullptr ? reinterpret_cast<const char *>(name) : "";
}

bool Gr_OpenGLExtensionSupported(const char *name) {
    if (name == nullptr || name[0] == '\0' || strchr(name, ' ') != nullptr) return false;
    size_t length = strlen(name);
    const GLubyte *all = GrGL.GetString(GL_EXTENSIONS);
    if (all == nullptr) return false;
    const char *cursor = reinterpret_cast<const char *>(all);
    while ((cursor = strstr(cursor, name)) != nullptr) {
        bool startsWord = cursor == reinterpret_cast<const char *>(all) || cursor[-1] == ' ';
        bool endsWord = cursor[length] == ' ' || cursor[length] == '\0';
        if (startsWord && endsWord) return true;
        cursor += length;
    }
    return false;
}

uint64_t Gr_GetGLStateCallCount() { return GLStateCalls; }

void Gr_Close() {
    if (Tessellator != nullptr) gluDeleteTess(Tessellator);
    Tessellator = nullptr;
    TessCombined = std::vector<double>();
    Gr_DestroyOffscreenImage();
    Gr_MopupDirectScreenExport();
    if (Offscreen.Context != nullptr) OSMesa.DestroyContext(Offscreen.Context);
    Offscreen.Context = nullptr;
    if (GrGLFunctionsSource() == offscreenGetProc) GrResetGLFunctions();
    Building = ListBuild_s();
    HW = HWState_s();
    GrContext = GrContext_s();
}
