// Coordinate systems and views: the 2D maps (frame on paper, paper zoom in the work area, hard
// copy, grid on a linear, log or reversed axis) and their inverses; position and unit conversions;
// the 3D model view, projection and transforms, checked against hand-worked points for rotations
// about each data axis, orthographic against perspective, the near plane, decomposition; the
// view stack.
#include <gtest/gtest.h>

#include <cmath>

#include "base/plot/coordsys.h"

namespace {

constexpr double Pi = 3.14159265358979323846;
constexpr double Tol = 1e-9;

TransformInputs_s StandardInputs() {
    TransformInputs_s inputs;
    inputs.FrameRect = {1.0, 8.25, 10.0, 0.25};
    inputs.PaperWidth = 11.0;
    inputs.PaperHeight = 8.5;
    inputs.RegionInWorkArea = {0.0, 0.0, 10.0, 5.0};
    inputs.UsableWorkAreaWidth = 1001;  // 1000 usable steps
    inputs.UsableWorkAreaHeight = 801;  // 800
    inputs.JDotsPerIDots = 1.0;
    inputs.PlUnitsPerInch = 1016.0;
    inputs.Viewport = {0.1, 0.1, 0.9, 0.9};
    inputs.XAxis = {0.0, 10.0, CoordScale_Linear, false};
    inputs.YAxis = {0.0, 100.0, CoordScale_Linear, false};
    return inputs;
}

TEST(CoordSysMap, InvertAndCompose) {
    CoordMap_s map{2.0, 3.0, -4.0, 1.0};
    CoordMap_s inverse = CoordMap_Invert(map);
    // x' = 2x + 3 undone: x = (x' - 3) / 2.
    EXPECT_DOUBLE_EQ(CoordMap_X(inverse, 7.0), 2.0);
    EXPECT_DOUBLE_EQ(CoordMap_Y(inverse, -7.0), 2.0);
    CoordMap_s both = CoordMap_Compose(map, CoordMap_s{10.0, 1.0, 0.5, 0.0});
    EXPECT_DOUBLE_EQ(CoordMap_X(both, 1.0), 51.0);  // (2 + 3) * 10 + 1
    EXPECT_DOUBLE_EQ(CoordMap_Y(both, 1.0), -1.5);  // (-4 + 1) * 0.5
}

TEST(CoordSys2D, FrameOnPaper) {
    Transformations_s maps;
    Set2DTransformations(StandardInputs(), maps);
    // Frame 9 by 8 inches, bottom left at paper (1, 8.25).
    EXPECT_DOUBLE_EQ(CoordMap_X(maps.Frame2Paper, 0.0), 1.0);
    EXPECT_DOUBLE_EQ(CoordMap_Y(maps.Frame2Paper, 0.0), 8.25);
    EXPECT_DOUBLE_EQ(CoordMap_X(maps.Frame2Paper, 0.5), 5.5);
    EXPECT_DOUBLE_EQ(CoordMap_Y(maps.Frame2Paper, 1.0), 0.25);
    EXPECT_DOUBLE_EQ(CoordMap_Y(maps.Frame2Paper, 0.5), 4.25);
    EXPECT_DOUBLE_EQ(maps.MaxPaperDim, 11.0);
}

TEST(CoordSys2D, PaperZoomWidthLimited) {
    Transformations_s maps;
    Set2DTransformations(StandardInputs(), maps);
    // Region 10 x 5 in a 1000 x 800 area: 100 dots per inch, 300 spare rows split above and below.
    EXPECT_DOUBLE_EQ(maps.IDotsPerPaperInch, 100.0);
    EXPECT_DOUBLE_EQ(maps.JDotsPerPaperInch, 100.0);
    EXPECT_DOUBLE_EQ(CoordMap_X(maps.Paper2Screen, 5.0), 500.0);
    EXPECT_DOUBLE_EQ(CoordMap_Y(maps.Paper2Screen, 0.0), 150.0);
    EXPECT_DOUBLE_EQ(CoordMap_Y(maps.Paper2Screen, 2.5), 400.0);
}

TEST(CoordSys2D, PaperZoomHeightLimited) {
    TransformInputs_s inputs = StandardInputs();
    inputs.RegionInWorkArea = {0.0, 0.0, 4.0, 8.0};
    Transformations_s maps;
    Set2DTransformations(inputs, maps);
    // 800 rows over 8 inches; 400 of the 1000 columns used, centred.
    EXPECT_DOUBLE_EQ(maps.JDotsPerPaperInch, 100.0);
    EXPECT_DOUBLE_EQ(CoordMap_X(maps.Paper2Screen, 0.0), 300.0);
    EXPECT_DOUBLE_EQ(CoordMap_X(maps.Paper2Screen, 2.0), 500.0);
    EXPECT_DOUBLE_EQ(CoordMap_Y(maps.Paper2Screen, 4.0), 400.0);
}

TEST(CoordSys2D, PaperZoomWithPixelAspect) {
    TransformInputs_s inputs = StandardInputs();
    inputs.JDotsPerIDots = 2.0;
    Transformations_s maps;
    Set2DTransformations(inputs, maps);
    // 800 / (1000 * 2) = 0.4 is below the region's 0.5: height limited, 160 rows and 80 columns
    // per inch, 10 inches taking 800 of 1000 columns.
    EXPECT_DOUBLE_EQ(maps.JDotsPerPaperInch, 160.0);
    EXPECT_DOUBLE_EQ(maps.IDotsPerPaperInch, 80.0);
    EXPECT_DOUBLE_EQ(CoordMap_X(maps.Paper2Screen, 0.0), 100.0);
    EXPECT_DOUBLE_EQ(CoordMap_X(maps.Paper2Screen, 10.0), 900.0);
    EXPECT_DOUBLE_EQ(CoordMap_Y(maps.Paper2Screen, 5.0), 800.0);
}

TEST(CoordSys2D, Hardcopy) {
    Transformations_s maps;
    Set2DTransformations(StandardInputs(), maps);
    // 1016 units per inch, Y up from the bottom of an 8.5 inch sheet.
    EXPECT_DOUBLE_EQ(CoordMap_X(maps.Paper2Hardcopy, 1.0), 1016.0);
    EXPECT_DOUBLE_EQ(CoordMap_Y(maps.Paper2Hardcopy, 0.0), 8636.0);
    EXPECT_DOUBLE_EQ(CoordMap_Y(maps.Paper2Hardcopy, 8.5), 0.0);
    // Frame bottom left: paper (1, 8.25), a quarter inch above the sheet's bottom.
    EXPECT_DOUBLE_EQ(CoordMap_X(maps.Frame2Hardcopy, 0.0), 1016.0);
    EXPECT_DOUBLE_EQ(CoordMap_Y(maps.Frame2Hardcopy, 0.0), 254.0);
    // Screen (500, 400) is paper (5, 2.5).
    EXPECT_NEAR(CoordMap_X(maps.Screen2Hardcopy, 500.0), 5080.0, Tol);
    EXPECT_NEAR(CoordMap_Y(maps.Screen2Hardcopy, 400.0), 6096.0, Tol);

    TransformInputs_s inputs = StandardInputs();
    inputs.IsMetafile = true;
    Set2DTransformations(inputs, maps);
    EXPECT_DOUBLE_EQ(CoordMap_Y(maps.Paper2Hardcopy, 2.0), 2032.0);
    EXPECT_DOUBLE_EQ(CoordMap_Y(maps.Paper2Hardcopy, 0.0), 0.0);
}

TEST(CoordSys2D, PlotterUnits) {
    EXPECT_DOUBLE_EQ(PlUnitsPerInchForDevice(0, 1016.0), 1016.0);
    EXPECT_DOUBLE_EQ(PlUnitsPerInchForDevice(1, 500.0), 500.0);
    EXPECT_DOUBLE_EQ(PlUnitsPerInchForDevice(2, 1016.0), 2880.0);
    // 11 inches * 2880 = 31680 > 16000; halved once 15840 fits.
    EXPECT_DOUBLE_EQ(LimitPlUnitsPerInchTo16Bit(2880.0, 11.0), 1440.0);
    EXPECT_DOUBLE_EQ(LimitPlUnitsPerInchTo16Bit(1016.0, 11.0), 1016.0);
}

TEST(CoordSys2D, GridOnLinearAxes) {
    Transformations_s maps;
    Set2DTransformations(StandardInputs(), maps);
    EXPECT_DOUBLE_EQ(maps.Grid2Frame.XScale, 0.08);
    EXPECT_NEAR(CoordMap_X(maps.Grid2Frame, 0.0), 0.1, Tol);
    EXPECT_NEAR(CoordMap_X(maps.Grid2Frame, 5.0), 0.5, Tol);
    EXPECT_NEAR(CoordMap_X(maps.Grid2Frame, 10.0), 0.9, Tol);
    EXPECT_NEAR(CoordMap_Y(maps.Grid2Frame, 25.0), 0.3, Tol);
    // Grid (5, 50) is frame (0.5, 0.5), paper (5.5, 4.25).
    EXPECT_NEAR(ConvertXPosition(maps, CoordSys_Grid, CoordSys_Paper, 5.0), 5.5, Tol);
    EXPECT_NEAR(ConvertYPosition(maps, CoordSys_Grid, CoordSys_Paper, 50.0), 4.25, Tol);
}

TEST(CoordSys2D, ReversedAxisSwapsSign) {
    TransformInputs_s inputs = StandardInputs();
    inputs.XAxis.IsReversed = true;
    Transformations_s maps;
    Set2DTransformations(inputs, maps);
    EXPECT_DOUBLE_EQ(maps.Grid2Frame.XScale, -0.08);
    EXPECT_NEAR(CoordMap_X(maps.Grid2Frame, 0.0), 0.9, Tol);
    EXPECT_NEAR(CoordMap_X(maps.Grid2Frame, 10.0), 0.1, Tol);
    EXPECT_NEAR(CoordMap_X(maps.Grid2Frame, 2.5), 0.7, Tol);
}

TEST(CoordSys2D, ZeroSpanCountsAsOne) {
    TransformInputs_s inputs = StandardInputs();
    inputs.XAxis = {5.0, 5.0, CoordScale_Linear, false};
    Transformations_s maps;
    Set2DTransformations(inputs, maps);
    EXPECT_DOUBLE_EQ(maps.Grid2Frame.XScale, 0.8);
    EXPECT_NEAR(CoordMap_X(maps.Grid2Frame, 5.0), 0.1, Tol);
    EXPECT_NEAR(CoordMap_X(maps.Grid2Frame, 6.0), 0.9, Tol);
}

TEST(CoordSys2D, LogAxis) {
    TransformInputs_s inputs = StandardInputs();
    inputs.YAxis = {1.0, 1000.0, CoordScale_Log, false};
    Transformations_s maps;
    Set2DTransformations(inputs, maps);
    // Three decades over 0.8 of the frame: 10 lies one third along.
    EXPECT_NEAR(ConvertYPosition(maps, CoordSys_Grid, CoordSys_Frame, 10.0), 0.1 + 0.8 / 3.0, Tol);
    EXPECT_NEAR(ConvertYPosition(maps, CoordSys_Grid, CoordSys_Frame, 1000.0), 0.9, Tol);
    EXPECT_NEAR(ConvertYPosition(maps, CoordSys_Frame, CoordSys_Grid, 0.1 + 0.8 / 3.0), 10.0, 1e-9);
    EXPECT_NEAR(ConvertYPosition(maps, CoordSys_Frame, CoordSys_Grid, 0.5), std::pow(10.0, 1.5), 1e-9);
    // 0 counts as exponent -150.
    EXPECT_NEAR(ConvertYPosition(maps, CoordSys_Grid, CoordSys_Frame, 0.0), 0.1 - 150.0 * 0.8 / 3.0, 1e-9);
    // Exponents clamp to 150 on the way back.
    EXPECT_DOUBLE_EQ(ConvertToLog(400.0, 1.0, 0.0), 1e150);
    EXPECT_DOUBLE_EQ(ConvertToLog(-400.0, 1.0, 0.0), 1e-150);
    EXPECT_DOUBLE_EQ(ConvertFromLog(1e200, 2.0, 1.0), 301.0);
    EXPECT_DOUBLE_EQ(ConvertFromLog(100.0, 2.0, 1.0), 5.0);
    // A non-positive limit of a log axis counts as -1e150 in log terms.
    inputs.YAxis = {0.0, 1000.0, CoordScale_Log, false};
    Set2DTransformations(inputs, maps);
    EXPECT_NEAR(maps.Grid2Frame.YScale, 0.8 / (3.0 + 1e150), 1e-160);
}

TEST(CoordSys2D, EveryMapRoundTrips) {
    TransformInputs_s inputs = StandardInputs();
    inputs.XAxis = {-3.0, 7.0, CoordScale_Linear, true};
    inputs.YAxis = {2.0, 9.0, CoordScale_Linear, false};
    Transformations_s maps;
    Set2DTransformations(inputs, maps);
    const CoordSys_e systems[] = {CoordSys_Grid, CoordSys_Frame, CoordSys_Paper, CoordSys_Screen};
    const double points[][2] = {{0.0, 0.0}, {1.0, -2.0}, {0.25, 0.75}, {-40.0, 123.5}, {1e3, -1e-3}};
    for (CoordSys_e from : systems)
        for (CoordSys_e to : systems) {
            if (from == to) continue;
            // Each pair has a direct map and its inverse.
            EXPECT_NE(XScaleFact(maps, from, to), 1.0) << CoordSys_Word(from) << "->" << CoordSys_Word(to);
            for (const auto &point : points) {
                double x = ConvertXPosition(maps, from, to, point[0]);
                double y = ConvertYPosition(maps, from, to, point[1]);
                EXPECT_NEAR(ConvertXPosition(maps, to, from, x), point[0], 1e-9 * (1.0 + std::fabs(point[0])));
                EXPECT_NEAR(ConvertYPosition(maps, to, from, y), point[1], 1e-9 * (1.0 + std::fabs(point[1])));
            }
        }
    // Composed maps agree with going step by step: grid -> frame -> paper -> screen.
    for (const auto &point : points) {
        double frameX = CoordMap_X(maps.Grid2Frame, point[0]);
        double paperX = CoordMap_X(maps.Frame2Paper, frameX);
        EXPECT_NEAR(CoordMap_X(maps.Grid2Screen, point[0]), CoordMap_X(maps.Paper2Screen, paperX), 1e-6);
        EXPECT_NEAR(CoordMap_X(maps.Screen2Hardcopy, CoordMap_X(maps.Paper2Screen, paperX)),
                    CoordMap_X(maps.Paper2Hardcopy, paperX), 1e-6);
    }
}

TEST(CoordSys2D, UnknownPairsAndFrameOffset) {
    Transformations_s maps;
    Set2DTransformations(StandardInputs(), maps);
    // No map from hard copy back to paper: the value passes through.
    EXPECT_DOUBLE_EQ(ConvertXPosition(maps, CoordSys_Hardcopy, CoordSys_Paper, 123.0), 123.0);
    EXPECT_DOUBLE_EQ(XScaleFact(maps, CoordSys_Hardcopy, CoordSys_Paper), 1.0);
    // Frame offset: inches, scale only. 4.5 inches across a 9 inch frame is half of it.
    EXPECT_DOUBLE_EQ(ConvertXPosition(maps, CoordSys_FrameOffset, CoordSys_Frame, 4.5), 0.5);
    EXPECT_DOUBLE_EQ(ConvertYPosition(maps, CoordSys_FrameOffset, CoordSys_Frame, 2.0), 0.25);
    // To paper: no offset of the frame's corner, Y turned to run down.
    EXPECT_DOUBLE_EQ(ConvertXPosition(maps, CoordSys_FrameOffset, CoordSys_Paper, 2.0), 2.0);
    EXPECT_DOUBLE_EQ(ConvertYPosition(maps, CoordSys_FrameOffset, CoordSys_Paper, 2.0), -2.0);
    // 0.08 frame per grid unit, 9 inches per frame: 1 grid unit is 0.72 inch of offset.
    EXPECT_NEAR(ConvertXPosition(maps, CoordSys_Grid, CoordSys_FrameOffset, 1.0), 0.72, Tol);
}

TEST(CoordSysUnits, ThroughFrameHeight) {
    Transformations_s maps;
    Set2DTransformations(StandardInputs(), maps);
    double value = 0.1 + 0.2;
    EXPECT_EQ(ConvertUnits(maps, Units_Point, Units_Point, value), value);
    // The frame is 8 inches high: 576 points per frame unit.
    EXPECT_NEAR(ConvertUnits(maps, Units_Frame, Units_Point, 0.5), 288.0, Tol);
    EXPECT_NEAR(ConvertUnits(maps, Units_Point, Units_Frame, 72.0), 0.125, Tol);
    // 100 dots per inch: 800 pixels per frame unit.
    EXPECT_NEAR(ConvertUnits(maps, Units_Frame, Units_Screen, 0.25), 200.0, Tol);
    // Y axis 0..100 over 0.8 of the frame: 50 grid units are 0.4 frame, 230.4 points.
    EXPECT_NEAR(ConvertUnits(maps, Units_Grid, Units_Point, 50.0), 230.4, 1e-9);
}

// ---- 3D ---------------------------------------------------------------------------------------

struct View3D {
    ThreeDView_s View;
    GlobalThreeD_s Global;
    ThreeDViewCalc_s Calc;
    Box3D_s Data{{-1.0, -1.0, -1.0}, {1.0, 1.0, 1.0}};

    // Looking straight down Z from (0, 0, 10), no rotation.
    View3D() {
        View.PsiAngle = View.ThetaAngle = View.AlphaAngle = 0.0;
        View.ViewerPosition = {0.0, 0.0, 10.0};
        View.DrawInPerspective = false;
        View.ViewWidth = 4.0;
        View.FieldOfView = 0.5;
        Global.AxisScaleFact = {1.0, 1.0, 1.0};
        Global.RotateOrigin = {0.0, 0.0, 0.0};
        Update();
    }
    void Update() { VDI3D_UpdateThreeDViewCalculatedValues(View, Global, Data, nullptr, false, 1.0, Calc); }
    XYZ_s Map(double x, double y, double z) const { return VDI3D_TransformXYZ(View, Calc, {x, y, z}); }
};

void ExpectXY(const XYZ_s &point, double x, double y, const char *what) {
    EXPECT_NEAR(point.X, x, 1e-9) << what;
    EXPECT_NEAR(point.Y, y, 1e-9) << what;
}

TEST(CoordSysMatrix, InversesAndRotationSense) {
    Matrix4x4_s forward, backward, product;
    Matrix4x4_LoadFrustum(forward, -1.0, 2.0, -0.5, 1.5, 0.5, 20.0);
    Matrix4x4_LoadFrustumInverse(backward, -1.0, 2.0, -0.5, 1.5, 0.5, 20.0);
    Matrix4x4_Multiply(product, forward, backward);
    for (int row = 0; row < 4; row++)
        for (int col = 0; col < 4; col++) EXPECT_NEAR(product.M[row][col], row == col ? 1.0 : 0.0, 1e-12);
    Matrix4x4_LoadOrtho(forward, -1.0, 2.0, -0.5, 1.5, 0.5, 20.0);
    Matrix4x4_LoadOrthoInverse(backward, -1.0, 2.0, -0.5, 1.5, 0.5, 20.0);
    Matrix4x4_Multiply(product, backward, forward);
    for (int row = 0; row < 4; row++)
        for (int col = 0; col < 4; col++) EXPECT_NEAR(product.M[row][col], row == col ? 1.0 : 0.0, 1e-12);
    // A frustum sends the near plane's corners to the cube's corners.
    Matrix4x4_LoadFrustum(forward, -1.0, 2.0, -0.5, 1.5, 0.5, 20.0);
    double w;
    XYZ_s corner = Matrix4x4_TransformPoint(forward, {2.0, 1.5, -0.5}, &w);
    EXPECT_NEAR(corner.X / w, 1.0, 1e-12);
    EXPECT_NEAR(corner.Y / w, 1.0, 1e-12);
    EXPECT_NEAR(corner.Z / w, -1.0, 1e-12);
    // +90 degrees about Z: x to y, y to -x.
    Matrix4x4_LoadRotate(forward, Pi / 2.0, 0.0, 0.0, 2.0);
    XYZ_s turned = Matrix4x4_TransformPoint(forward, {1.0, 0.0, 0.0});
    EXPECT_NEAR(turned.X, 0.0, 1e-12);
    EXPECT_NEAR(turned.Y, 1.0, 1e-12);
    turned = Matrix4x4_TransformPoint(forward, {0.0, 1.0, 0.0});
    EXPECT_NEAR(turned.X, -1.0, 1e-12);
    EXPECT_NEAR(turned.Y, 0.0, 1e-12);
}

TEST(CoordSys3D, ModelViewOrderAndInverse) {
    ThreeDView_s view;
    view.PsiAngle = 1.0;
    view.ThetaAngle = -2.0;
    view.AlphaAngle = 0.5;
    view.ViewerPosition = {6.0, 4.0, 5.0};
    XYZ_s scale{1.0, 2.0, 0.5};
    Matrix4x4_s modelView, inverse, product;
    Setup3DModelViewMatrix(view, scale, modelView, inverse);
    Matrix4x4_Multiply(product, modelView, inverse);
    for (int row = 0; row < 4; row++)
        for (int col = 0; col < 4; col++) EXPECT_NEAR(product.M[row][col], row == col ? 1.0 : 0.0, 1e-12);
    // The viewer position goes to the eye.
    XYZ_s eye = Matrix4x4_TransformPoint(modelView, view.ViewerPosition);
    EXPECT_NEAR(eye.X, 0.0, 1e-12);
    EXPECT_NEAR(eye.Y, 0.0, 1e-12);
    EXPECT_NEAR(eye.Z, 0.0, 1e-12);
    // Psi alone (theta = alpha = 0): the data turns by -psi about X, so +Y tilts away from the
    // viewer: a unit Y step becomes (0, cos psi, -sin psi).
    view = ThreeDView_s{};
    view.PsiAngle = Pi / 6.0;
    view.ThetaAngle = view.AlphaAngle = 0.0;
    view.ViewerPosition = {0.0, 0.0, 0.0};
    Setup3DModelViewMatrix(view, {1.0, 1.0, 1.0}, modelView, inverse);
    XYZ_s step = Matrix4x4_TransformPoint(modelView, {0.0, 1.0, 0.0});
    EXPECT_NEAR(step.X, 0.0, 1e-12);
    EXPECT_NEAR(step.Y, std::sqrt(3.0) / 2.0, 1e-12);
    EXPECT_NEAR(step.Z, -0.5, 1e-12);
    // Theta turns about Z before psi; alpha turns the picture last.
    view.PsiAngle = 0.0;
    view.ThetaAngle = Pi / 2.0;
    view.AlphaAngle = Pi / 2.0;
    Setup3DModelViewMatrix(view, {1.0, 1.0, 1.0}, modelView, inverse);
    step = Matrix4x4_TransformPoint(modelView, {1.0, 0.0, 0.0});
    EXPECT_NEAR(step.X, -1.0, 1e-12);  // x -> y by theta, y -> -x by alpha
    EXPECT_NEAR(step.Y, 0.0, 1e-12);
}

TEST(CoordSys3D, CalculatedValues) {
    View3D v;
    // Data eye depths 9..11, padded by 0.025 of 2 on both sides.
    EXPECT_NEAR(v.Calc.ViewDistance, 10.0, 1e-12);
    EXPECT_NEAR(v.Calc.DataNearDist, 9.0, 1e-12);
    EXPECT_NEAR(v.Calc.DataFarDist, 11.0, 1e-12);
    EXPECT_NEAR(v.Calc.NearDist, 8.95 * 0.9999, 1e-12);
    EXPECT_NEAR(v.Calc.FarDist, 11.05 * 1.0001, 1e-12);
    EXPECT_NEAR(v.Calc.MidDist, (8.95 * 0.9999 + 11.05 * 1.0001) / 2.0, 1e-12);
    EXPECT_FALSE(v.Calc.NearClipped);
    // Orthographic: the field of view follows the width.
    EXPECT_NEAR(v.View.FieldOfView, 2.0 * std::atan(4.0 / (8.95 * 0.9999 + 11.05 * 1.0001)), 1e-12);
    EXPECT_NEAR(v.Calc.ViewLimits.X1, -2.0, 1e-12);
    EXPECT_NEAR(v.Calc.ViewLimits.X2, 2.0, 1e-12);
    EXPECT_NEAR(v.Calc.ViewLimits.Y2, 2.0, 1e-12);
    // Showing axes: no padding.
    VDI3D_UpdateThreeDViewCalculatedValues(v.View, v.Global, v.Data, nullptr, true, 1.0, v.Calc);
    EXPECT_NEAR(v.Calc.NearDist, 9.0 * 0.9999, 1e-12);
    // A wider other box widens the depth range.
    Box3D_s other{{0.0, 0.0, -3.0}, {0.0, 0.0, 2.0}};
    VDI3D_UpdateThreeDViewCalculatedValues(v.View, v.Global, v.Data, &other, true, 0.5, v.Calc);
    EXPECT_NEAR(v.Calc.NearDist, 8.0 * 0.9999, 1e-12);
    EXPECT_NEAR(v.Calc.FarDist, 13.0 * 1.0001, 1e-12);
    EXPECT_NEAR(v.Calc.ViewLimits.Y2, 1.0, 1e-12);  // half width 2 times aspect 0.5
}

TEST(CoordSys3D, OffCentreOriginShiftsLimits) {
    View3D v;
    v.Global.RotateOrigin = {1.0, 0.5, 0.0};
    v.Update();
    // Origin at view (1, 0.5): eye offsets (-1, -0.5); the origin lands on frame-view 0.
    EXPECT_NEAR(v.Calc.EyeOffsetX, -1.0, 1e-12);
    EXPECT_NEAR(v.Calc.ViewLimits.X1, -3.0, 1e-12);
    EXPECT_NEAR(v.Calc.ViewLimits.X2, 1.0, 1e-12);
    ExpectXY(v.Map(1.0, 0.5, 0.0), 0.0, 0.0, "origin");
    ExpectXY(v.Map(0.0, 0.0, 0.0), -1.0, -0.5, "line of sight at the middle of the limits");
}

TEST(CoordSys3D, RotateAboutZ) {
    View3D v;
    ExpectXY(v.Map(1.0, 0.0, 0.0), 1.0, 0.0, "x before");
    ExpectXY(v.Map(0.0, 1.0, 0.0), 0.0, 1.0, "y before");
    RotateAboutAxis(v.View, v.Global, RotateAxis_Z, Pi / 2.0, RotateOriginLocation_DefinedOrigin);
    v.Update();
    EXPECT_NEAR(v.View.ThetaAngle, Pi / 2.0, 1e-12);
    EXPECT_NEAR(v.View.PsiAngle, 0.0, 1e-12);
    // Counter-clockwise seen from +Z: x goes where y was, y where -x was.
    ExpectXY(v.Map(1.0, 0.0, 0.0), 0.0, 1.0, "x after");
    ExpectXY(v.Map(0.0, 1.0, 0.0), -1.0, 0.0, "y after");
    EXPECT_NEAR(v.View.ViewerPosition.Z, 10.0, 1e-12);
}

TEST(CoordSys3D, RotateAboutX) {
    View3D v;
    RotateAboutAxis(v.View, v.Global, RotateAxis_X, Pi / 2.0, RotateOriginLocation_DefinedOrigin);
    v.Update();
    // y -> z, z -> -y: +Y now points at the viewer, +Z down the picture.
    XYZ_s y = v.Map(0.0, 1.0, 0.0);
    ExpectXY(y, 0.0, 0.0, "y after");
    EXPECT_NEAR(y.Z, 9.0, 1e-9);
    XYZ_s z = v.Map(0.0, 0.0, 1.0);
    ExpectXY(z, 0.0, -1.0, "z after");
    EXPECT_NEAR(z.Z, 10.0, 1e-9);
    ExpectXY(v.Map(1.0, 0.0, 0.0), 1.0, 0.0, "x unchanged");
    // The eye now sits on +Y, looking back at the origin.
    EXPECT_NEAR(v.View.ViewerPosition.X, 0.0, 1e-9);
    EXPECT_NEAR(v.View.ViewerPosition.Y, 10.0, 1e-9);
    EXPECT_NEAR(v.View.ViewerPosition.Z, 0.0, 1e-9);
    EXPECT_NEAR(v.View.PsiAngle, Pi / 2.0, 1e-12);
}

TEST(CoordSys3D, RotateAboutY) {
    View3D v;
    RotateAboutAxis(v.View, v.Global, RotateAxis_Y, Pi / 2.0, RotateOriginLocation_DefinedOrigin);
    v.Update();
    // z -> x, x -> -z.
    ExpectXY(v.Map(0.0, 0.0, 1.0), 1.0, 0.0, "z after");
    XYZ_s x = v.Map(1.0, 0.0, 0.0);
    ExpectXY(x, 0.0, 0.0, "x after");
    EXPECT_NEAR(x.Z, 11.0, 1e-9);  // pointing away
    ExpectXY(v.Map(0.0, 1.0, 0.0), 0.0, 1.0, "y unchanged");
}

TEST(CoordSys3D, RotateAboutViewerKeepsEye) {
    View3D v;
    v.Global.RotateOrigin = {0.0, 0.0, 0.0};
    RotateAboutAxis(v.View, v.Global, RotateAxis_Z, Pi / 2.0, RotateOriginLocation_Viewer);
    EXPECT_NEAR(v.View.ViewerPosition.X, 0.0, 1e-12);
    EXPECT_NEAR(v.View.ViewerPosition.Y, 0.0, 1e-12);
    EXPECT_NEAR(v.View.ViewerPosition.Z, 10.0, 1e-12);
}

TEST(CoordSys3D, RotateWithAxisScaleKeepsOrigin) {
    View3D v;
    v.Global.AxisScaleFact = {1.0, 3.0, 1.0};
    v.Global.RotateOrigin = {0.5, 0.5, 0.0};
    v.Update();
    XYZ_s before = v.Map(0.5, 0.5, 0.0);
    RotateAboutAxis(v.View, v.Global, RotateAxis_Z, Pi / 2.0, RotateOriginLocation_DefinedOrigin);
    v.Update();
    XYZ_s after = v.Map(0.5, 0.5, 0.0);
    ExpectXY(after, before.X, before.Y, "origin stays put");
    // In scaled units a grid step of 1 in Y is 3 long; turned +90 degrees it points to -X.
    XYZ_s step = v.Map(0.5, 1.5, 0.0);
    ExpectXY(step, after.X - 3.0, after.Y, "scaled y after");
}

TEST(CoordSys3D, PerspectiveAgainstOrthographic) {
    View3D ortho;
    View3D persp;
    persp.View.DrawInPerspective = true;
    persp.View.FieldOfView = 0.4;
    persp.Update();
    double near = 8.95 * 0.9999, far = 11.05 * 1.0001, mid = (near + far) / 2.0;
    EXPECT_NEAR(persp.View.ViewWidth, (near + far) * std::tan(0.2), 1e-12);
    // On the line of sight both agree.
    ExpectXY(ortho.Map(0.0, 0.0, 1.0), 0.0, 0.0, "axis ortho");
    ExpectXY(persp.Map(0.0, 0.0, -1.0), 0.0, 0.0, "axis persp");
    // Off it, perspective scales by mid distance over eye depth.
    ExpectXY(ortho.Map(1.0, 0.0, 1.0), 1.0, 0.0, "ortho near");
    ExpectXY(ortho.Map(1.0, 0.0, -1.0), 1.0, 0.0, "ortho far");
    ExpectXY(persp.Map(1.0, 0.0, 1.0), mid / 9.0, 0.0, "persp near");
    ExpectXY(persp.Map(1.0, 0.0, -1.0), mid / 11.0, 0.0, "persp far");
    ExpectXY(persp.Map(0.0, -0.5, 0.0), 0.0, -0.5 * mid / 10.0, "persp y");
    // Nearer than the near plane: not projected, scaled by mid over near.
    XYZ_s close = persp.Map(1.0, 0.0, 9.5);
    EXPECT_NEAR(close.Z, 0.5, 1e-12);
    ExpectXY(close, mid / near, 0.0, "before near plane");
    // Orthographic points nearer than near keep their view X.
    ExpectXY(ortho.Map(1.0, 0.0, 9.5), 1.0, 0.0, "ortho before near plane");
}

TEST(CoordSys3D, TransformRoundTrips) {
    for (bool perspective : {false, true}) {
        View3D v;
        v.View.DrawInPerspective = perspective;
        v.View.PsiAngle = 1.0;
        v.View.ThetaAngle = -2.0;
        v.View.AlphaAngle = 0.3;
        v.View.ViewerPosition = {6.0, 4.0, 5.0};
        v.Global.AxisScaleFact = {1.0, 2.0, 0.5};
        v.Update();
        const XYZ_s points[] = {{0.0, 0.0, 0.0}, {1.0, -1.0, 0.5}, {-0.7, 0.2, -1.0}, {0.9, 0.9, 0.9}};
        for (const XYZ_s &point : points) {
            XYZ_s frameView = VDI3D_TransformXYZ(v.View, v.Calc, point);
            XYZ_s back = VDI3D_InverseTransformXYZ(v.View, v.Calc, frameView);
            EXPECT_NEAR(back.X, point.X, 1e-9);
            EXPECT_NEAR(back.Y, point.Y, 1e-9);
            EXPECT_NEAR(back.Z, point.Z, 1e-9);
            // The combined inverse undoes the combined transform.
            double w;
            XYZ_s clip = Matrix4x4_TransformPoint(v.Calc.Combined, point, &w);
            XYZ_s divided{clip.X / w, clip.Y / w, clip.Z / w};  // the same point, homogeneous w 1
            double w2;
            XYZ_s again = Matrix4x4_TransformPoint(v.Calc.CombinedInverse, divided, &w2);
            EXPECT_NEAR(again.X / w2, point.X, 1e-9);
            EXPECT_NEAR(again.Z / w2, point.Z, 1e-9);
        }
    }
}

TEST(CoordSys3D, OrthoTransformAndLift) {
    View3D v;
    XYZ_s ortho = VDI3D_OrthoTransformXYZ(v.Calc, {1.0, 2.0, 0.5});
    EXPECT_NEAR(ortho.X, 1.0, 1e-12);
    EXPECT_NEAR(ortho.Y, 2.0, 1e-12);
    EXPECT_NEAR(ortho.Z, 9.5, 1e-12);
    // Lift by 1 towards the eye: depth 10 -> 9, X scaled by 9/10 so the picture stays put.
    v.View.DrawInPerspective = true;
    v.Update();
    XYZ_s lifted = VDI3D_PerspectiveLiftXYZ(v.View, v.Calc, {1.0, 0.0, 0.0}, 1.0);
    EXPECT_NEAR(lifted.X, 0.9, 1e-12);
    EXPECT_NEAR(lifted.Z, 1.0, 1e-12);
    ExpectXY(v.Map(lifted.X, lifted.Y, lifted.Z), v.Map(1.0, 0.0, 0.0).X, 0.0, "same picture");
}

TEST(CoordSys3D, FlatDataAndEyeInsideData) {
    View3D v;
    v.Data = {{-1.0, -1.0, 0.0}, {1.0, 1.0, 0.0}};
    v.Update();
    EXPECT_GT(v.Calc.NearDist, 0.0);
    EXPECT_NEAR(v.Calc.NearDist, 10.0 * 0.9999, 1e-12);
    EXPECT_GT(v.Calc.FarDist, v.Calc.NearDist);
    EXPECT_FALSE(v.Calc.NearClipped);
    // Eye in the middle of the data: near is pulled to 0.01 of the padded depth 2.1.
    View3D inside;
    inside.View.ViewerPosition = {0.0, 0.0, 0.0};
    inside.Update();
    EXPECT_TRUE(inside.Calc.NearClipped);
    EXPECT_NEAR(inside.Calc.NearDist, 0.021 * 0.9999, 1e-12);
    EXPECT_NEAR(inside.Calc.FarDist, 1.05 * 1.0001, 1e-12);
}

TEST(CoordSys3D, DecomposeView) {
    ThreeDView_s view;
    view.PsiAngle = 1.0;
    view.ThetaAngle = -2.0;
    view.AlphaAngle = 0.5;
    view.ViewerPosition = {6.0, 4.0, 5.0};
    Matrix4x4_s modelView, inverse;
    Setup3DModelViewMatrix(view, {1.0, 2.0, 0.5}, modelView, inverse);
    XYZ_s viewer;
    double psi, theta, alpha;
    VDI3D_DecomposeView(modelView, viewer, psi, theta, alpha);
    EXPECT_NEAR(psi, 1.0, 1e-12);
    EXPECT_NEAR(theta, -2.0, 1e-12);
    EXPECT_NEAR(alpha, 0.5, 1e-12);
    EXPECT_NEAR(viewer.X, 6.0, 1e-12);
    EXPECT_NEAR(viewer.Y, 4.0, 1e-12);
    EXPECT_NEAR(viewer.Z, 5.0, 1e-12);
    // Psi pi: the limit branch, alpha 0 and the twist carried by theta.
    view.PsiAngle = Pi;
    view.ThetaAngle = 0.3;
    view.AlphaAngle = 0.0;
    Setup3DModelViewMatrix(view, {1.0, 1.0, 1.0}, modelView, inverse);
    VDI3D_DecomposeView(modelView, viewer, psi, theta, alpha);
    EXPECT_DOUBLE_EQ(psi, Pi);
    EXPECT_NEAR(theta, 0.3, 1e-12);
    EXPECT_DOUBLE_EQ(alpha, 0.0);
    // Psi 0 with theta and alpha both turning about Z: they merge into theta.
    view.PsiAngle = 0.0;
    view.ThetaAngle = 0.3;
    view.AlphaAngle = 0.2;
    Setup3DModelViewMatrix(view, {1.0, 1.0, 1.0}, modelView, inverse);
    VDI3D_DecomposeView(modelView, viewer, psi, theta, alpha);
    EXPECT_DOUBLE_EQ(psi, 0.0);
    EXPECT_NEAR(theta, 0.5, 1e-12);
    EXPECT_DOUBLE_EQ(alpha, 0.0);
}

TEST(CoordSys3D, ViewSizeAndGoodDistance) {
    View3D v;
    // Orthographic, aspect 0.5: a wide box limits by width, a tall one by height / aspect.
    EXPECT_DOUBLE_EQ(VDI3D_CalcViewSize(v.View, v.Calc, 0.5, 4.0, 1.0), 4.0);
    EXPECT_DOUBLE_EQ(VDI3D_CalcViewSize(v.View, v.Calc, 0.5, 4.0, 4.0), 8.0);
    v.View.DrawInPerspective = true;
    v.Update();
    EXPECT_NEAR(VDI3D_CalcViewSize(v.View, v.Calc, 1.0, 2.0, 1.0), 2.0 * std::atan(1.0 / v.Calc.MidDist), 1e-12);
    // Box depths 9..11 from the eye (view Z -11..-9), origin 10 away: -10 + 10 + 6 * 2.
    EXPECT_NEAR(VDI3D_CalcGoodViewDistance(v.Calc, v.Data), 12.0, 1e-12);
    Box3D_s flat{{-1.0, -1.0, 0.0}, {1.0, 1.0, 0.0}};
    EXPECT_NEAR(VDI3D_CalcGoodViewDistance(v.Calc, flat), 6.0, 1e-12);  // depth counts as 1
}

TEST(CoordSys3D, AnglesFolded) {
    ThreeDView_s view;
    view.PsiAngle = 5.0 * Pi;
    view.ThetaAngle = -2.5 * Pi;
    view.AlphaAngle = 0.25;
    NormalizeViewAngles(view);
    EXPECT_NEAR(view.PsiAngle, Pi, 1e-12);
    EXPECT_NEAR(view.ThetaAngle, -0.5 * Pi, 1e-12);
    EXPECT_DOUBLE_EQ(view.AlphaAngle, 0.25);
}

// ---- view stack -------------------------------------------------------------------------------

bool SameInt(int a, int b) { return a == b; }

TEST(CoordSysViewStack, PushPopOrderAndDepth) {
    ViewStack_s<int> stack;
    for (int view = 1; view <= 17; view++) EXPECT_TRUE(PushView(stack, view, false, SameInt));
    // 17 pushes into 16 entries: view 1 is gone.
    EXPECT_EQ(stack.Entries[0], 17);
    EXPECT_EQ(stack.Entries[15], 2);
    // LAST removes the top and installs the one before.
    EXPECT_EQ(PopView(stack), 16);
    EXPECT_EQ(PopView(stack), 15);
    for (int pop = 0; pop < 13; pop++) PopView(stack);
    EXPECT_EQ(stack.Entries[0], 2);
    // At the bottom the oldest stays.
    EXPECT_EQ(PopView(stack), 2);
    EXPECT_EQ(PopView(stack), 2);
}

TEST(CoordSysViewStack, OnlyIfChangedAndPopulate) {
    ViewStack_s<int> stack;
    PopulateViewStack(stack, 7);
    PopulateViewStack(stack, 7);
    for (int entry = 0; entry < ViewStackDepth; entry++) EXPECT_EQ(stack.Entries[entry], 7);
    EXPECT_FALSE(PushView(stack, 7, true, SameInt));
    EXPECT_EQ(stack.Entries[1], 7);
    EXPECT_TRUE(PushView(stack, 8, true, SameInt));
    EXPECT_EQ(stack.Entries[0], 8);
    EXPECT_TRUE(PushView(stack, 8, false, SameInt));  // unconditional pushes always go on
    EXPECT_EQ(stack.Entries[1], 8);
    // LAST 16 times from a populated stack runs to the bottom.
    for (int pop = 0; pop < ViewStackDepth; pop++) PopView(stack);
    EXPECT_EQ(stack.Entries[0], 7);
}

}  // namespace
