// The table of OpenGL entry points: the entries that do nothing, and the loader.
#include "base/plot/glfuncs.h"

#include <type_traits>

#include "base/kernel/orvassert.h"

namespace {

// Each entry with its name. The one list serves both the table that does nothing and the loader,
// so the two cannot disagree; Visit_f is called as visit(slot, name).
template <typename Visit_f>
int forEachEntry(GLFunctions_s &table, Visit_f visit) {
    int count = 0;
    auto entry = [&](auto &slot, const char *name) {
        visit(slot, name);
        count++;
    };
    entry(table.Begin, "glBegin");
    entry(table.End, "glEnd");
    entry(table.Vertex2i, "glVertex2i");
    entry(table.Vertex2f, "glVertex2f");
    entry(table.Vertex2d, "glVertex2d");
    entry(table.Vertex3f, "glVertex3f");
    entry(table.Vertex3d, "glVertex3d");
    entry(table.Normal3f, "glNormal3f");
    entry(table.Normal3d, "glNormal3d");
    entry(table.Color3ubv, "glColor3ubv");
    entry(table.Color4fv, "glColor4fv");
    entry(table.TexCoord2d, "glTexCoord2d");
    entry(table.RasterPos2i, "glRasterPos2i");

    entry(table.Enable, "glEnable");
    entry(table.Disable, "glDisable");
    entry(table.BlendFunc, "glBlendFunc");
    entry(table.LineWidth, "glLineWidth");
    entry(table.LineStipple, "glLineStipple");
    entry(table.PolygonMode, "glPolygonMode");
    entry(table.PolygonOffset, "glPolygonOffset");
    entry(table.ShadeModel, "glShadeModel");
    entry(table.FrontFace, "glFrontFace");
    entry(table.DepthMask, "glDepthMask");

    entry(table.Viewport, "glViewport");
    entry(table.Scissor, "glScissor");
    entry(table.MatrixMode, "glMatrixMode");
    entry(table.LoadIdentity, "glLoadIdentity");
    entry(table.LoadMatrixd, "glLoadMatrixd");
    entry(table.Ortho, "glOrtho");
    entry(table.PushMatrix, "glPushMatrix");
    entry(table.PopMatrix, "glPopMatrix");

    entry(table.Lightfv, "glLightfv");
    entry(table.LightModelfv, "glLightModelfv");
    entry(table.LightModeli, "glLightModeli");
    entry(table.Materialf, "glMaterialf");
    entry(table.Materialfv, "glMaterialfv");
    entry(table.ColorMaterial, "glColorMaterial");

    entry(table.GenLists, "glGenLists");
    entry(table.NewList, "glNewList");
    entry(table.EndList, "glEndList");
    entry(table.CallList, "glCallList");
    entry(table.DeleteLists, "glDeleteLists");

    entry(table.GenTextures, "glGenTextures");
    entry(table.BindTexture, "glBindTexture");
    entry(table.DeleteTextures, "glDeleteTextures");
    entry(table.TexParameteri, "glTexParameteri");
    entry(table.TexEnvi, "glTexEnvi");
    entry(table.TexImage2D, "glTexImage2D");
    entry(table.PixelStorei, "glPixelStorei");

    entry(table.ClearColor, "glClearColor");
    entry(table.ClearDepth, "glClearDepth");
    entry(table.Clear, "glClear");
    entry(table.DrawBuffer, "glDrawBuffer");
    entry(table.ReadBuffer, "glReadBuffer");
    entry(table.ReadPixels, "glReadPixels");
    entry(table.CopyPixels, "glCopyPixels");
    entry(table.Flush, "glFlush");
    entry(table.Finish, "glFinish");
    entry(table.GetString, "glGetString");
    // Every member of the table is named above.
    CHECK(count * sizeof(void (*)()) == sizeof(GLFunctions_s));
    return count;
}

// An entry point that does nothing: a void entry returns nothing, the others zero or null.
template <typename Result_t, typename... Args_t>
Result_t GLAPIENTRY doNothing(Args_t...) {
    return Result_t();
}

template <typename Result_t, typename... Args_t>
void setDoNothing(Result_t(GLAPIENTRY *&slot)(Args_t...)) {
    slot = &doNothing<Result_t, Args_t...>;
}

GLFunctions_s tableThatDoesNothing() {
    GLFunctions_s table;
    forEachEntry(table, [](auto &slot, const char *) { setDoNothing(slot); });
    return table;
}

GLGetProc_pf Source = nullptr;

}  // namespace

GLFunctions_s GrGL = tableThatDoesNothing();

bool GrLoadGLFunctions(GLGetProc_pf getProc) {
    if (getProc == nullptr) return false;
    GLFunctions_s loaded = tableThatDoesNothing();
    bool complete = true;
    forEachEntry(loaded, [&](auto &slot, const char *name) {
        void *address = getProc(name);
        if (address == nullptr)
            complete = false;
        else
            slot = reinterpret_cast<std::remove_reference_t<decltype(slot)>>(address);
    });
    if (!complete) return false;
    GrGL = loaded;
    Source = getProc;
    return true;
}

GLGetProc_pf GrGLFunctionsSource() { return Source; }

void GrResetGLFunctions() {
    GrGL = tableThatDoesNothing();
    Source = nullptr;
}
