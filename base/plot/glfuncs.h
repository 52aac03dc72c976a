// The OpenGL entry points of the device layer, as one table of function pointers filled from the
// library that owns the current context: OSMesa's for the off-screen image, the window system's
// for the screen. The program links both libraries, and a gl* symbol bound at link time may come
// from the one whose context is not current and then draw nothing; so nothing in the plot code
// calls gl* by name: it calls GrGL.Begin(...), GrGL.Vertex2i(...) and so on.
// Before the first load every entry does nothing and returns zero, as OpenGL does without a
// current context. The GLU tessellator is a library of its own that never touches the context;
// its vertex callbacks call through this table.
// Relies on: the OpenGL header for the types and constants only.
#pragma once

#include <GL/gl.h>

// One pointer per entry point, named without the gl prefix, typed as the header declares it.
struct GLFunctions_s {
    decltype(&::glBegin) Begin;
    decltype(&::glEnd) End;
    decltype(&::glVertex2i) Vertex2i;
    decltype(&::glVertex2f) Vertex2f;
    decltype(&::glVertex2d) Vertex2d;
    decltype(&::glVertex3f) Vertex3f;
    decltype(&::glVertex3d) Vertex3d;
    decltype(&::glNormal3f) Normal3f;
    decltype(&::glNormal3d) Normal3d;
    decltype(&::glColor3ubv) Color3ubv;
    decltype(&::glColor4fv) Color4fv;
    decltype(&::glTexCoord2d) TexCoord2d;
    decltype(&::glRasterPos2i) RasterPos2i;

    decltype(&::glEnable) Enable;
    decltype(&::glDisable) Disable;
    decltype(&::glBlendFunc) BlendFunc;
    decltype(&::glLineWidth) LineWidth;
    decltype(&::glLineStipple) LineStipple;
    decltype(&::glPolygonMode) PolygonMode;
    decltype(&::glPolygonOffset) PolygonOffset;
    decltype(&::glShadeModel) ShadeModel;
    decltype(&::glFrontFace) FrontFace;
    decltype(&::glDepthMask) DepthMask;

    decltype(&::glViewport) Viewport;
    decltype(&::glScissor) Scissor;
    decltype(&::glMatrixMode) MatrixMode;
    decltype(&::glLoadIdentity) LoadIdentity;
    decltype(&::glLoadMatrixd) LoadMatrixd;
    decltype(&::glOrtho) Ortho;
    decltype(&::glPushMatrix) PushMatrix;
    decltype(&::glPopMatrix) PopMatrix;

    decltype(&::glLightfv) Lightfv;
    decltype(&::glLightModelfv) LightModelfv;
    decltype(&::glLightModeli) LightModeli;
    decltype(&::glMaterialf) Materialf;
    decltype(&::glMaterialfv) Materialfv;
    decltype(&::glColorMaterial) ColorMaterial;

    decltype(&::glGenLists) GenLists;
    decltype(&::glNewList) NewList;
    decltype(&::glEndList) EndList;
    decltype(&::glCallList) CallList;
    decltype(&::glDeleteLists) DeleteLists;

    decltype(&::glGenTextures) GenTextures;
    decltype(&::glBindTexture) BindTexture;
    decltype(&::glDeleteTextures) DeleteTextures;
    decltype(&::glTexParameteri) TexParameteri;
    decltype(&::glTexEnvi) TexEnvi;
    decltype(&::glTexImage2D) TexImage2D;
    decltype(&::glPixelStorei) PixelStorei;

    decltype(&::glClearColor) ClearColor;
    decltype(&::glClearDepth) ClearDepth;
    decltype(&::glClear) Clear;
    decltype(&::glDrawBuffer) DrawBuffer;
    decltype(&::glReadBuffer) ReadBuffer;
    decltype(&::glReadPixels) ReadPixels;
    decltype(&::glCopyPixels) CopyPixels;
    decltype(&::glFlush) Flush;
    decltype(&::glFinish) Finish;
    decltype(&::glGetString) GetString;
};

extern GLFunctions_s GrGL;

// The look-up of one library: the address of an entry point by its name ("glBegin"), or null.
using GLGetProc_pf = void *(*)(const char *name);

// Fills the table from getProc. All or nothing: if an entry point is missing the table stays as
// it was and the result is false; the caller reports the failure in its own terms.
bool GrLoadGLFunctions(GLGetProc_pf getProc);
// The look-up the table was last filled from; null while it holds the entries that do nothing.
GLGetProc_pf GrGLFunctionsSource();
// Back to the entries that do nothing (a context going away for good, and tests).
void GrResetGLFunctions();
