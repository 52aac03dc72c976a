// GeneralBase: the root of the style tree, the settings that do not belong to a frame. It is a
// record of sub-records, one per major set command of the general style ($!PAPER, $!PRINTSETUP,
// $!EXPORTSETUP, $!FILECONFIG, $!BASICCOLOR, $!INTERFACE, $!BASICSIZE, $!DEFAULTGEOM,
// $!DEFAULTTEXT, $!FONTADJUST, $!FRAMESETUP, $!GLOBALCOLORMAP, $!LIMITS, $!COMPATIBILITY,
// $!DATASETUP, $!GLOBALFRAME, $!GLOBALLINKING), plus the older settings that stand directly in the
// record and that many modules read by name. GeneralFactoryDefaults holds the compiled-in values;
// GeneralBase is what is in force (factory values, the modern values, then the configuration
// file, then the command line and macros).
// The record is plain data read everywhere; the style language sets it field by field through the
// tables of base/macro/genstyle.cpp. A default-constructed record holds the factory values.
// Units: lengths on paper are inches; sizes relative to a frame are fractions of the frame height
// (macros show them as percent); angles are radians (macros show degrees); colours are indices of
// the basic colour table; enumerated settings hold the values of their macro enumeration.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "base/kernel/types.h"

constexpr int NumBasicColors = 66;            // 0-7 BLACK..WHITE, 8-63 CUSTOM1-56, 64 gray, 65 dark gray
constexpr int NumColorMapGroups = 4;
constexpr int MaxColorMapControlPoints = 50;
constexpr int NumPaperSizes = 6;
constexpr int NumPlotterPens = 23;

struct RGB_s {
    int16_t R, G, B;  // 0 to 255 each
};

// ---- $!PAPER ----------------------------------------------------------------------------------

// PAPERSIZE values. The size records are stored in another order: see PaperSizeInfoSlot.
enum PaperSize_e { PaperSize_Letter = 0, PaperSize_Double = 1, PaperSize_A4 = 2, PaperSize_A3 = 3,
                   PaperSize_Custom1 = 4, PaperSize_Custom2 = 5 };
// Where the size record of a PaperSize_e stands in Paper_s::PaperSizeInfo (LETTER, DOUBLE, A3, A4,
// CUSTOM1, CUSTOM2); -1 for a value that is no paper size.
int PaperSizeInfoSlot(int paperSize);

// One sheet, inches (PAPERSIZEINFO <size> {WIDTH HEIGHT ...HARDCLIPOFFSET}).
struct PaperSizeInfo_s {
    double Width, Height;
    double LeftHardClipOffset, RightHardClipOffset, TopHardClipOffset, BottomHardClipOffset;
};

// Factory: a white, transparent landscape Letter sheet with grid, ruler and sheet shown; rulers
// every inch, grid every half inch. Letter is the size in use (our choice). The work area shows
// the turned Letter sheet with 0.05 inch around it.
struct Paper_s {
    int BackgroundColor = 7;  // WHITE
    bool IsTransparent = true;
    bool OrientPortrait = false;
    bool ShowGrid = true;
    bool ShowPaper = true;
    bool ShowRuler = true;
    int PaperSize = PaperSize_Letter;
    std::array<PaperSizeInfo_s, NumPaperSizes> PaperSizeInfo = {{
        {8.5, 11.0, 0.125, 0.125, 0.125, 0.125},                // LETTER
        {11.0, 17.0, 0.125, 0.125, 0.125, 0.125},               // DOUBLE
        {11.69291339, 16.53543307, 0.125, 0.125, 0.125, 0.125}, // A3
        {8.26771654, 11.69291339, 0.125, 0.125, 0.125, 0.125},  // A4
        {8.5, 14.0, 0.1, 0.1, 0.1, 0.1},                        // CUSTOM1
        {8.0, 10.0, 0.2, 0.2, 0.2, 0.2},                        // CUSTOM2
    }};
    int RulerSpacing = 5;      // ONEINCH
    int PaperGridSpacing = 4;  // HALFINCH
    Rect_s RegionInWorkArea = {-0.05, -0.05, 11.05, 8.55};
};

// ---- $!PRINTSETUP -----------------------------------------------------------------------------

// Factory (our choices): PostScript in colour, one copy, six decimal places, HP-GL at 1016 plotter
// units per inch and pen speed 30, Latin-1 fonts in PostScript. Spool commands hand the file, in
// place of the @, to lpr; set-up and mop-up strings are empty. The pens of the plotter pen map:
// the eight named colours take pens 1 to 8, the custom colours cycle through 1 to 8, and axes,
// grid lines, streamlines, multi-coloured lines, boundaries and labels use pen 1.
struct PrintSetup_s {
    int Precision = 6;                   // PRECISION: decimal places of coordinates
    bool ForceExtra3DSorting = false;    // FORCEEXTRA3DSORTING
    int NumLightSourceShades = 5;        // NUMLIGHTSOURCESHADES
    double PlotterUnitsPerInch = 1016.0; // PLOTTERUNITSPERINCH
    int PenSpeed = 30;                   // PENSPEED
    int RGBLegendOutputResolution = 50;  // RGBLEGENDOUTPUTRESOLUTION: steps of an RGB legend
    int NumHardcopyCopies = 1;           // NUMHARDCOPYCOPIES
    bool LargePaperOk = false;           // LARGEPAPEROK
    int Driver = 2;                      // DRIVER: PS
    int Palette = 2;                     // PALETTE: COLOR
    bool UseISOLatin1FontsInPS = true;   // USEISOLATIN1FONTSINPS
    // SPOOLER
    std::string HPGL2MonoSpoolCmd = "lpr @", HPGL2ColorSpoolCmd = "lpr @", HPGLSpoolCmd = "lpr @",
                PSMonoSpoolCmd = "lpr @", PSColorSpoolCmd = "lpr @", LGSpoolCmd = "lpr @";
    // JOBCONTROL
    std::string HPGLMopupStr, HPGL2MopupStr, PostMopupStr, LGMopupStr, HPGLSetupStr, HPGL2SetupStr, PostSetupStr,
        LGSetupStr;
    // PLOTTERPENMAP, in the order of its rows: BLACKPEN..WHITEPEN, CUSTOM1PEN..CUSTOM8PEN, AXISPEN,
    // MAJGRIDLINEPEN, MINGRIDLINEPEN, STREAMLINEPEN, MULTICOLORLINEPEN, BOUNDARYPEN, LABELPEN.
    std::array<int, NumPlotterPens> PlotterPenMap = {1, 2, 3, 4, 5, 6, 7, 8, 1, 2, 3, 4, 5, 6, 7, 8,
                                                     1, 1, 1, 1, 1, 1, 1};
};

// ---- $!EXPORTSETUP ----------------------------------------------------------------------------

// The preview image of an EPS export (EPSPREVIEWIMAGE). Factory (our choice): none, 128 by 128,
// 8 bits of gray.
struct EPSPreviewImage_s {
    int ImageType = 0;  // IMAGETYPE: NONE
    int ImageWidth = 128;
    int ImageHeight = 128;
    int GrayScaleDepth = 8;
};

// Factory: PNG of the current frame, 512 pixels wide. Our choices for the rest: 10 frames a
// second, no colour reduction, no antialiasing (factor 3 when turned on), 8 bits of gray, Intel
// byte order, standard JPEG at 75 percent quality, lossless flash images made as small as
// possible, vector rendering for vector formats, the texture resize filter. The file name is
// GeneralBase_s::ExportFName.
struct ExportSetup_s {
    int ExportFormat = 13;  // PNG
    EPSPreviewImage_s EPSPreviewImage;
    int SunRasterFormat = 1;  // STANDARD
    int ExportRegion = 0;     // CURRENTFRAME
    double AnimationSpeed = 10.0;
    bool ConvertTo256Colors = false;
    bool UseMultipleColorTables = false;
    int ImageWidth = 512;
    bool UseSuperSampleAntiAliasing = false;
    int SuperSampleFactor = 3;
    int GrayScaleDepth = 8;
    int TIFFByteOrder = 0;         // INTEL
    int JPEGEncoding = 0;          // STANDARD
    double Quality = 0.75;         // a fraction; macros show percent
    int FlashImageType = 0;        // LOSSLESS
    int FlashCompressionType = 1;  // SMALLESTSIZE
    int PrintRenderType = 0;       // VECTOR
    int ResizeFilter = 0;          // TEXTUREFILTER
};

// ---- $!FILECONFIG -----------------------------------------------------------------------------

// One text per kind of file of the file dialogs, in the order of their rows.
struct FileKindTexts_s {
    std::string InputDataFile, OutputAsciiDataFile, OutputBinaryDataFile, LayoutFile, InputLayoutFile,
        OutputLayoutFile, OutputLayoutPackageFile, StyleFile, MacroFile, EquationFile, ColorMapFile, ImportImageFile;
};

// The file configuration beyond the older settings that stand directly in GeneralBase_s (load
// mode, strands, memory mapping, load on demand, temporary path, the filters). Factory (our
// choices): layouts remember relative paths, no data and a preview; extensions without the dot;
// an extension is added automatically, with a warning.
struct FileConfig_s {
    bool UseRelativePaths = true;  // LAYOUTCONFIG USERELATIVEPATHS, also USERELATIVEPATHSINLAYOUTS
    bool IncludeData = false;      // LAYOUTCONFIG INCLUDEDATA
    bool IncludePreview = true;    // LAYOUTCONFIG INCLUDEPREVIEW
    FileKindTexts_s FNameExtension = {"plt", "dat", "plt", "lay", "lay", "lay", "lpk", "sty", "mcr", "eqn", "map", "png"};
    bool DoAutoFNameExtension = true;
    bool DoAutoFNameExtensionWarning = true;
    bool AddZonesToExistingStrands = false;
};

// ---- $!INTERFACE ------------------------------------------------------------------------------

// What a middle or right button does: the click, and the drag with each combination of Control,
// Alt and Shift (the values of the macro enumerations of BUTTONCLICK and the drags).
struct MouseButtonActions_s {
    int ButtonClick;
    int SimpleDrag, ControlledDrag, AltedDrag, ShiftedDrag, ControlAltedDrag, ControlShiftedDrag, AltShiftedDrag,
        ControlAltShiftedDrag;
};

// OpenGL settings of one destination (SCREENRENDERING, IMAGERENDERING). Factory (our choice):
// strips of 250 primitives, 5000 primitives per block, a 24-bit depth buffer, textures up to
// 2048 pixels, all lines stippled, no rectangle correction; the last-pixel correction for images
// only.
struct OpenGLRendering_s {
    bool AdjustRectangleRightAndBottom = false;
    bool DoExtraDrawForLastPixel = false;
    int StippleAllLines = 0;  // ALL
    int DepthBufferSize = 24;
    int MaxStripLength = 250;
    int MaxPrimativesPerBlock = 5000;
    int MinBitsPerRGBPlane = 4;
    double PolygonOffsetExtBiasFactor = 1.0;
    bool UseTriangleStrips = true;
    bool UseQuadStrips = true;
    bool TriangulateFilledPolygons = false;
    bool UseGLColorMaterialFunction = true;
    bool ConstantlyUseScissoring = false;
    int MaxTextureSize = 2048;
    bool ForceSmoothShadingForLighting = false;
};

struct OpenGLConfig_s {
    bool AllowHWAcceleration = true;
    bool RunDisplayListsAfterBuilding = true;
    bool IncludeBackBufferDuringFrontBufferDraws = true;
    double MaxImageFilterMagnification = 2.0;
    OpenGLRendering_s ScreenRendering;
    // Exported images set the last pixel of a precise line.
    OpenGLRendering_s ImageRendering{.DoExtraDrawForLastPixel = true};
};

// Steps of the translate and magnify tools, fractions (macros show percent).
struct InterfaceSteps_s {
    double StepSize, SmallStep, MediumStep, LargeStep;
};

// The rotate tool. Angles in radians (macros show degrees).
struct InterfaceRotation_s {
    int RotationMode = 1;                      // SPHERICAL
    double CurrentAngle = 0.17453292519943295;  // 10 degrees
    double SmallAngle = 0.017453292519943295;   // 1 degree
    double MediumAngle = 0.17453292519943295;   // 10 degrees
    double LargeAngle = 0.52359877559829882;    // 30 degrees
    bool ShowGeoms = true;
};

// The defaults of the data alteration dialogs: smoothing, interpolation, triangulation and the
// extraction of contour lines. Factory (our choice): one pass at weight 0.8 with zero gradient at
// the boundary; inverse distance with exponent 3.5 over the 8 nearest points per octant; kriging
// over 0.3 of the diagonal with linear drift; triangles kept down to 0.25 of the best shape.
// DERIVATIVEBOUNDARY and VARIABLEDERIVATIONMETHOD of this block stand in DataSetup_s.
struct InterfaceData_s {
    int SmoothBndryCond = 1;  // ZEROGRADIENT
    int NumSmoothPasses = 1;
    int VolumeCellInterpolationMode = 1;  // TRILINEAR
    double SmoothWeight = 0.8;
    double InvDistExponent = 3.5;
    double InvDistMinRadius = 0.0;
    double LinearInterpConst = 0.0;
    int LinearInterpMode = 0;   // DONTCHANGE
    int InterpPtSelection = 2;  // OCTANTNPOINTS
    int InterpNPoints = 8;
    double KrigRange = 0.3;
    double KrigZeroValue = 0.0;
    int KrigDrift = 1;  // LINEAR
    double TriangleKeepFactor = 0.25;
    int ContLineCreateMode = 0;  // ONEZONEPERCONTOURLEVEL
};

// The interface settings beyond the older ones that stand directly in GeneralBase_s (debug,
// delays, pauses, warnings, interrupts, system commands, undo levels, the initial plot). Factory
// values are our choices, chosen for a workstation display: see each field.
struct Interface_s {
    int MinimumTimeout = 300;  // milliseconds
    bool UseApproximatePlots = false;
    int PlotApproximationMode = 0;  // AUTOMATIC
    bool ShowTextGeomsInApproxViews = true;
    int NumPtsAllowedBeforeApprox = 1000000;
    double PercentageOfPointsToKeep = 0.5;  // a fraction; macros show percent
    bool ShowStatusLine = true;
    bool ShowContinuousStatus = false;
    bool ShowCoordinates = true;
    bool ShowCoordinatesWithSelectorAdjustor = false;
    bool UseOffscreenBitmap = true;
    bool FastLinePatternsOnScreen = false;
    bool UseDisplayLists = true;
    bool CacheLightDisplayListsOnly = false;
    bool UseDoubleForDisplayLists = false;
    int MinPixelsForDrag = 3;
    bool AutoRedrawIsActive = true;
    int SidebarSizing = 0;           // MAXOFALL
    double PickHandleWidth = 0.07;   // inches
    double RulerThickness = 0.25;    // inches
    double RulerPadding = 0.05;      // inches
    std::string UnixHelpBrowserCmd;  // empty: the desktop's own choice
    int XORColor = 7;                // colour index
    bool UseIndependentColorMap = false;
    bool BeepOnFrameInterrupt = true;
    bool UseOpenGL = true;
    bool SecureSpoolCommands = true;
    bool ShowWaitDialogs = true;
    // MOUSEACTIONS: the middle button zooms, the right one translates; with Control the paper.
    MouseButtonActions_s MiddleButton = {0 /*REDRAW*/, 3 /*ZOOMDATA*/, 1 /*ZOOMPAPER*/, 0, 0, 0, 0, 0, 0};
    MouseButtonActions_s RightButton = {1 /*REVERTTOSELECT*/, 4 /*TRANSLATEDATA*/, 2 /*TRANSLATEPAPER*/, 0, 0, 0, 0, 0, 0};
    int NumMouseButtons = 3;
    int QuickColorMode = 0;  // LINECOLOR
    bool ConserveDerivedVariableSpace = false;
    bool CollectTimeStatistics = false;
    bool TryToUseDoubleBuffer = true;
    bool UseDoubleBuffering = true;
    int NumColorCellsToReturn = 0;
    bool ShowFrameBordersWhenOff = true;
    int BackingStoreMode = 1;  // REALTIMEUPDATE
    bool UseMod2MaskForAltDetection = false;
    bool LoadAddOnsUsingLazyRelocate = true;
    bool UseStrokeFontsOnScreen = false;
    bool UseStrokeFontsFor3DText = false;
    int MaxCustomColorsInInterface = 56;
    int XPgonFillOffset = 0;  // pixels
    int YPgonFillOffset = 0;
    bool ShowTooltips = true;
    bool AllowDataPointSelect = true;
    bool AllowDataPointAdjust = true;
    bool UseOrvanexPrintDrivers = true;
    int ScrBackgroundColor = 7;  // WHITE
    InterfaceSteps_s Translation = {0.1, 0.01, 0.1, 0.25};
    InterfaceSteps_s Scale = {0.1, 0.05, 0.1, 0.25};
    double ZoomScalePerFrameUnit = 1.0;  // SCALE ZOOMSCALEPERFRAMEUNIT
    InterfaceRotation_s Rotation;
    InterfaceData_s Data;
    OpenGLConfig_s OpenGLConfig;
    int InitialFieldProbeDialogPage = 0;  // NODALVALUES
};

// ---- $!BASICSIZE ------------------------------------------------------------------------------

struct SizeList_s {
    double Tiny, Small, Medium, Large, Huge;
};

// Factory (our choice). All but the point text sizes are fractions of the frame height (macros
// show percent); point text sizes are points.
struct BasicSize_s {
    SizeList_s LineThicknesses = {0.0002, 0.001, 0.004, 0.008, 0.015};
    SizeList_s TickLengths = {0.005, 0.01, 0.02, 0.03, 0.04};
    SizeList_s SymbolSizes = {0.005, 0.01, 0.025, 0.04, 0.08};
    SizeList_s LinePatLengths = {0.005, 0.008, 0.02, 0.03, 0.05};
    SizeList_s ArrowheadSizes = {0.01, 0.03, 0.05, 0.08, 0.12};
    SizeList_s PointTextSizes = {8, 10, 14, 18, 24};
    SizeList_s FrameTextSizes = {0.015, 0.025, 0.035, 0.05, 0.1};
};

// ---- $!DEFAULTTEXT, $!DEFAULTGEOM -------------------------------------------------------------

// The style a new text takes (its position and string come with it). Factory: as a text record
// of a data file that gives nothing but its string: frame coordinates, black Helvetica-Bold 3
// percent of the frame high, no box (margin 10 percent of the height), global scope, clipped to the
// viewport; not attached to a zone.
struct TextStyle_s {
    int PositionCoordSys = 1;  // FRAME
    bool AttachToZone = false;
    int Zone = 0;   // zero-based
    int Color = 0;  // BLACK
    int Font = 1;   // HELVBOLD
    // In the units SizeUnits names: a fraction of the frame height (macros show percent) for
    // FRAME, else points. A change of SizeUnits does not convert it.
    double Height = 0.03;
    int SizeUnits = 1;         // FRAME
    int BoxType = 0;           // NONE
    double BoxMargin = 0.1;    // a fraction of the text height; macros show percent
    double BoxLineThickness = 0.004;
    int BoxColor = 0;          // BLACK
    int BoxFillColor = 7;      // WHITE
    double Angle = 0.0;        // radians
    int Anchor = 0;            // LEFT
    double LineSpacing = 1.0;
    int Scope = 0;             // GLOBAL
    int Clipping = 0;          // CLIPTOVIEWPORT
    std::string MacroFunctionCommand;
};

// The style a new geometry takes (its shape and points come with it). Factory: as a geometry
// record of a data file (black solid lines 0.1 percent thick, patterns 4 percent long, arrowheads
// 5 percent long at 20 degrees, 72 points around an ellipse), but in frame coordinates (our
// choice: geometries drawn by hand start on the frame).
struct GeomStyle_s {
    int GeomType = 0;          // LINESEGS
    int PositionCoordSys = 1;  // FRAME
    bool AttachToZone = false;
    int Zone = 0;  // zero-based
    int Color = 0;
    bool IsFilled = false;
    int FillColor = 0;
    int LinePattern = 0;  // SOLID
    double PatternLength = 0.04;
    double LineThickness = 0.001;
    int Scope = 0;      // GLOBAL
    int DrawOrder = 0;  // AFTERDATA
    int Clipping = 0;   // CLIPTOVIEWPORT
    std::string MacroFunctionCommand;
    int ArrowheadStyle = 0;       // PLAIN
    int ArrowheadAttachment = 0;  // NONE
    double ArrowheadSize = 0.05;
    double ArrowheadAngle = 0.3490658503988659;  // 20 degrees
    int NumEllipsePts = 72;
    bool MaintainAspectRatio = true;
    int ResizeFilter = 0;  // TEXTUREFILTER
};

// ---- $!FONTADJUST, $!FRAMESETUP ---------------------------------------------------------------

// Factory: sub- and superscripts at 0.6 of the height, bold strokes 2.5 times as thick; our
// choices for spacing (none) and the stroke thickness (0.1 of the character height).
struct FontAdjust_s {
    int InterCharSpacing = 0;
    double SubSupFraction = 0.6;
    double BoldFactor = 2.5;
    double StrokeFontLineThickness = 0.1;
};

// The kind and direction of a new streamtrace (DEFAULT2DSTREAMTRACE, DEFAULT3DSTREAMTRACE).
struct DefaultStreamtrace_s {
    int StreamType;
    int Direction;
};

// What new frames and plots start with. Factory (our choice): vector lengths 5 percent of the
// frame at the least 0; 15 contour levels in 2D and 3D; a 3D view at 1.1 times the fitted size;
// the first frame fills the work space; rakes of 10 points; rods and ribbons 1 percent wide.
struct FrameSetup_s {
    double VectMinLen = 0.0;   // fraction of the frame; macros show percent
    double VectDefLen = 0.05;  // fraction of the frame; macros show percent
    bool AligningContourLabels = true;
    int DefNumLevels = 15;
    int Def3DNumLevels = 15;
    double Initial3DScale = 1.1;
    bool FitInitialFrameToWorkspace = true;
    bool UseCommonSortStack = true;
    DefaultStreamtrace_s Default2DStreamtrace = {5 /*TWODLINE*/, 0 /*FORWARD*/};
    DefaultStreamtrace_s Default3DStreamtrace = {2 /*VOLUMELINE*/, 0 /*FORWARD*/};
    int NumStreamRakePoints = 10;
    double RodRibbonDefLen = 0.01;  // fraction of the frame; macros show percent
};

// ---- $!GLOBALCOLORMAP -------------------------------------------------------------------------

struct ColorMapControlPoint_s {
    double Location;  // COLORMAPFRACTION, 0 to 1, ascending along the map
    RGB_s LeadRGB, TrailRGB;
};

// A map's control points: only the first NumControlPoints are in use.
struct ColorMapBand_s {
    int NumControlPoints;
    std::array<ColorMapControlPoint_s, MaxColorMapControlPoints> ControlPoint;
};

// One colour map group. Factory: group n (0 to 3) shows map n (SMRAINBOW, LGRAINBOW, MODERN,
// GRAYSCALE); the bands are the factory maps of FactoryColorMapGroups.
struct ColorMap_s {
    int ContourColorMap;  // CONTOURCOLORMAP
    ColorMapBand_s TwoColor, SmRainbow, LgRainbow, Modern, GrayScale, UserDefined;
};

// ---- $!DATASETUP, $!GLOBALFRAME ---------------------------------------------------------------

// Factory (our choice): derived values of automatic type, simple boundary derivatives, accurate
// nodal derivation.
struct DataSetup_s {
    int ScratchDataFieldType = 255;     // AUTO
    int DerivativeBoundary = 0;         // SIMPLE; also INTERFACE DATA DERIVATIVEBOUNDARY
    int VariableDerivationMethod = 1;   // ACCURATE; also INTERFACE DATA VARIABLEDERIVATIONMETHOD
};

// Factory: no snapping (our choice), a header bar 0.12 inches high (the modern value is 0.2), and
// the header text of frame name, date and data set title.
struct GlobalFrame_s {
    bool SnapToGrid = false;
    bool SnapToPaper = false;
    double FrameHeaderHeight = 0.12;  // inches
    std::string FrameHeaderFormat = "&(FrameName) <math>=</math> &(Date) <math>=</math> &(DataSetTitle)";
};

// The factory basic colours: the eight named colours, CUSTOM1-56 (eight hues 45 degrees apart
// starting at red, in seven rows from dark to light), gray (128) and dark gray (64).
std::array<RGB_s, NumBasicColors> FactoryBasicColors();
// The factory colour map groups (see ColorMap_s).
std::array<ColorMap_s, NumColorMapGroups> FactoryColorMapGroups();

struct GeneralBase_s {
    Paper_s Paper;
    PrintSetup_s PrintSetup;
    ExportSetup_s ExportSetup;
    FileConfig_s FileConfig;
    std::array<RGB_s, NumBasicColors> BasicColor = FactoryBasicColors();
    Interface_s Interface;
    BasicSize_s BasicSize;
    GeomStyle_s DefaultGeom;
    TextStyle_s DefaultText;
    FontAdjust_s FontAdjust;
    FrameSetup_s FrameSetup;
    std::array<ColorMap_s, NumColorMapGroups> ColorMapGroups = FactoryColorMapGroups();
    bool AllowOldTextFormatting = false;  // $!COMPATIBILITY ALLOWOLDTEXTFORMATTING
    DataSetup_s DataSetup;
    GlobalFrame_s GlobalFrame;
    bool LinkColorMaps = true;  // $!GLOBALLINKING LINKCOLORMAPS: every contour group uses map group 1

    // interface switches
    bool Debug = false;          // PRINTDEBUG: echo actions and files opened to StdError
    bool Trace = false;          // trace file opening
    bool EnableWarnings = true;  // ENABLEWARNINGS
    bool EnablePauses = true;    // ENABLEPAUSES: $!PAUSE and information boxes
    bool EnableDelays = true;    // ENABLEDELAYS: $!DELAY
    bool EnableInterrupts = true;
    bool OkToExecuteSystemCommand = false;
    int NumUndoLevels = 50;      // MAXNUMUNDOLEVELS

    int InterruptCheckingFrequency = 100;  // INTERRUPTCHECKINGFREQUENCY, milliseconds
    bool AllowDataSharing = true;          // $!COMPATIBILITY ALLOWDATASHARING
    int DataFileVarLoadMode = 1;           // $!FILECONFIG DATAFILEVARLOADMODE: 0 BYNAME, 1 BYPOSITION
    bool AssignStrandIDs = true;           // $!FILECONFIG ASSIGNSTRANDIDS

    // load on demand and memory (the file configuration)
    bool UseMemoryMappedIO = true;               // USEMEMORYMAPPEDIO
    long MemoryMappedIOSizeThreshold = 0;        // MEMORYMAPPEDIOSIZETHRESHOLD, bytes; 0 means one page
    bool LoadOnDemandAllow = true;               // LOADONDEMAND ALLOW
    int LoadOnDemandUnloadStrategy = 0;          // UNLOADSTRATEGY: 0 AUTO, 1 NEVERUNLOAD, 2 MINIMIZEMEMORYUSE
    int LoadOnDemandDataStoreStrategy = 0;       // DATASTORESTRATEGY: 0 AUTO, 1 HEAP
    long MaxUsableMemoryMB = 0;                  // MAXUSABLEMEMORY; 0 means all physical memory
    double LODThresholdMinFract = 0.3;           // LODTHRESHOLDMINFRACT
    double LODThresholdMaxFract = 0.7;           // LODTHRESHOLDMAXFRACT

    // limits
    int MaxPtsInALine = 5000;         // MAXPTSINALINE
    int MaxChrsInTextLabels = 1023;   // MAXCHRSINTEXTLABELS
    int MaxNumPickObjects = 1500;     // MAXNUMPICKOBJECTS
    int MaxNumContourLevels = 400;    // MAXNUMCONTOURLEVELS
    int MaxAvailableProcessors = 0;   // MAXAVAILABLEPROCESSORS; 0 means ask the system
    int MaxFenrowZones = 5000;        // MAXFENROWZONES
    int MaxFenrowVars = 2048;         // MAXFENROWVARS
    int MaxThreads = 0;               // MAXTHREADS; 0 means one per processor
    int IPCTimeoutSeconds = 45;       // IPCTIMEOUTSECONDS

    // the initial plot of a load
    int InitialPlotType = 0;              // INITIALPLOTTYPE (a PlotType_e; 0 automatic)
    bool InitialPlotFirstZoneOnly = false; // INITIALPLOTFIRSTZONEONLY
    bool UseInitialPlotDialog = true;      // USEINITIALPLOTDIALOG

    // files
    std::string PrintFName;   // print file
    std::string ExportFName;  // export file ($!EXPORTSETUP EXPORTFNAME)
    bool PrintToFile = false; // $!PRINTSETUP SENDPRINTTOFILE
    std::string TempFilePath; // TEMPFILEPATH; empty means none configured

    // file filters of the file dialogs ($!FILECONFIG FNAMEFILTER)
    std::string DataFileFilter, AsciiDataFileFilter, BinaryDataFileFilter, LayoutFileFilter,
        InputLayoutFileFilter, LayoutPackageFileFilter, StyleFileFilter, MacroFileFilter,
        EquationFileFilter, ImageFileFilter, ColorMapFileFilter, OutputLayoutFileFilter;
};

extern GeneralBase_s GeneralFactoryDefaults;
extern GeneralBase_s GeneralBase;

// Fills GeneralFactoryDefaults with the compiled-in values.
void FillGeneralFactoryDefaults();
// Sets the file names and filters of both copies, names made absolute against the start directory.
void InitializeGeneralFileNameDefaults(const std::string &startupDirectory);
// The values a current installation uses in place of the factory ones; changes GeneralBase only,
// so that a value that differs from the factory one is written to layouts and old files keep
// their look: MAXPTSINALINE 20000 and a frame header bar of 0.2 inches.
void ModernizeGeneralBaseDefaults();
