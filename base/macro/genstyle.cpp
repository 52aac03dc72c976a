// The tables of the general style. Each table describes one record: for each row, its kind, its
// input rules and where the value lives; a block names the table of the record below it.
// The tables of blocks that occur more than once (a colour, a sheet size, a mouse button, an
// OpenGL destination, a colour map and its control points) are written once and reached through
// their own record. Tables whose record is the whole GeneralBase_s reach older settings that stand
// directly in it, so that their names stay what other modules read.
#include "base/macro/genstyle.h"

#include <iterator>
#include <utility>

#include "base/data/dataload.h"
#include "base/kernel/genbase.h"
#include "base/macro/vocab.h"

namespace {

using Target_pf = void *(*)(void *record);

// The address of a member of the record.
#define AT(Type, member) [](void *record) -> void * { return &static_cast<Type *>(record)->member; }
// The record itself: a block whose rows live in the record of its parent.
#define SAME [](void *record) -> void * { return record; }

constexpr StyleField_s Bool(int row, Target_pf target) { return MakeStyleField(row, StyleField_Bool, nullptr, target); }
constexpr StyleField_s Int(int row, const InputSpecs_s &rules, Target_pf target) {
    return MakeStyleField(row, StyleField_Int, &rules, target);
}
constexpr StyleField_s Long(int row, const InputSpecs_s &rules, Target_pf target) {
    return MakeStyleField(row, StyleField_Long, &rules, target);
}
constexpr StyleField_s EntIndex(int row, Target_pf target) {
    return MakeStyleField(row, StyleField_EntIndex, &EntIndexInputSpec, target);
}
constexpr StyleField_s Double(int row, const InputSpecs_s &rules, Target_pf target) {
    return MakeStyleField(row, StyleField_Double, &rules, target);
}
constexpr StyleField_s Enum(int row, Target_pf target) { return MakeStyleField(row, StyleField_Enum, nullptr, target); }
constexpr StyleField_s Channel(int row, Target_pf target) { return MakeStyleField(row, StyleField_RGBComponent, nullptr, target); }
constexpr StyleField_s String(int row, Target_pf target) { return MakeStyleField(row, StyleField_String, nullptr, target); }
constexpr StyleField_s FileName(int row, Target_pf target) { return MakeStyleField(row, StyleField_FileName, nullptr, target); }
constexpr StyleField_s ConfigOnly(StyleField_s field) {
    field.Flags |= StyleFieldFlag_ConfigFileOnly;
    return field;
}
constexpr StyleField_s WithHooks(StyleField_s field, void (*adjustSpec)(const void *, InputSpecs_s *), void (*afterChange)()) {
    field.AdjustSpec = adjustSpec;
    field.AfterChange = afterChange;
    return field;
}

template <size_t N>
constexpr StyleRecord_s recordOf(const StyleField_s (&fields)[N]) {
    return StyleRecord_s{fields, N};
}

// ---- input rules of the general style ----

// Lengths on the paper, inches.
const InputSpecs_s PaperLengthInputSpec{InputSpecType_Double, 0, 500, 1, ModifyXValueWithSuffixToInchPaperUnits};
const InputSpecs_s PaperDimensionInputSpec{InputSpecType_Double, 0.1, 500, 1, ModifyXValueWithSuffixToInchPaperUnits};
// Sizes relative to the frame height, shown as percent; a length with a unit converts to them.
const InputSpecs_s FrameSizeInputSpec{InputSpecType_Double, 0, 1, 100, ModifyXValueWithSuffixToFrameUnits};
// Zoom steps may pass 100 percent.
const InputSpecs_s ScaleStepInputSpec{InputSpecType_Double, 0, 10, 100, nullptr};
const InputSpecs_s ExportImageWidthInputSpec{InputSpecType_LgIndex, 1, 32766, 0, nullptr};
const InputSpecs_s GrayScaleDepthInputSpec{InputSpecType_SmInteger, 1, 8, 0, nullptr};
const InputSpecs_s SuperSampleFactorInputSpec{InputSpecType_SmInteger, 1, 16, 0, nullptr};
const InputSpecs_s PenNumberInputSpec{InputSpecType_SmInteger, 0, 16, 0, nullptr};
const InputSpecs_s NumMouseButtonsInputSpec{InputSpecType_SmInteger, 1, 3, 0, nullptr};
const InputSpecs_s NumCustomColorsInputSpec{InputSpecType_SmInteger, 0, 56, 0, nullptr};
const InputSpecs_s PixelOffsetInputSpec{InputSpecType_SmInteger, -100, 100, 0, nullptr};
const InputSpecs_s InterCharSpacingInputSpec{InputSpecType_SmInteger, -100, 100, 0, nullptr};
const InputSpecs_s DepthBufferSizeInputSpec{InputSpecType_SmInteger, 0, 64, 0, nullptr};
const InputSpecs_s ControlPointCountInputSpec{InputSpecType_SmInteger, 2, MaxColorMapControlPoints, 0, nullptr};
// A text height: points or frame percent, as the text's size units say (textHeightRules picks).
const InputSpecs_s TextHeightInputSpec{InputSpecType_Double, 1e-150, 2500, 1, nullptr};
// The limits.
const InputSpecs_s TextLabelLengthInputSpec{InputSpecType_LgIndex, 1, 100000, 0, nullptr};
const InputSpecs_s EntIndexLimitInputSpec{InputSpecType_SmInteger, 1, 32700, 0, nullptr};
const InputSpecs_s ProcessorsInputSpec{InputSpecType_LgIndex, 0, 8, 0, nullptr};

// ---- hooks ----

void textHeightRules(const void *record, InputSpecs_s *rules) {
    *rules = static_cast<const TextStyle_s *>(record)->SizeUnits == 1 /*FRAME*/ ? FrameTextSizeInputSpec
                                                                              : PointTextSizeInputSpec;
}
// The two load-on-demand fractions keep their order.
void lodMinFractSpec(const void *record, InputSpecs_s *rules) {
    rules->Max = static_cast<const GeneralBase_s *>(record)->LODThresholdMaxFract;
}
void lodMaxFractSpec(const void *record, InputSpecs_s *rules) {
    rules->Min = static_cast<const GeneralBase_s *>(record)->LODThresholdMinFract;
}
void revalidateLoadThresholds() { DataLoadValidateThresholdValues(true); }
// The colour tables hold the basic colours and the ramps built from the colour maps.
void colorTablesChanged() {
    if (SetValueHooks.ColorMapChanged != nullptr) SetValueHooks.ColorMapChanged();
}
constexpr StyleField_s InColorTables(StyleField_s field) { return WithHooks(field, nullptr, colorTablesChanged); }

// ---- shared blocks ----

const StyleField_s RGBFields[] = {
    InColorTables(Channel(MacroSetValue_R, AT(RGB_s, R))),
    InColorTables(Channel(MacroSetValue_G, AT(RGB_s, G))),
    InColorTables(Channel(MacroSetValue_B, AT(RGB_s, B))),
};
const StyleRecord_s RGBRecord = recordOf(RGBFields);

// ---- $!PAPER ----

const StyleField_s PaperSizeInfoFields[] = {
    Double(MacroSetValue_WIDTH, PaperDimensionInputSpec, AT(PaperSizeInfo_s, Width)),
    Double(MacroSetValue_HEIGHT, PaperDimensionInputSpec, AT(PaperSizeInfo_s, Height)),
    Double(MacroSetValue_LEFTHARDCLIPOFFSET, PaperLengthInputSpec, AT(PaperSizeInfo_s, LeftHardClipOffset)),
    Double(MacroSetValue_RIGHTHARDCLIPOFFSET, PaperLengthInputSpec, AT(PaperSizeInfo_s, RightHardClipOffset)),
    Double(MacroSetValue_TOPHARDCLIPOFFSET, PaperLengthInputSpec, AT(PaperSizeInfo_s, TopHardClipOffset)),
    Double(MacroSetValue_BOTTOMHARDCLIPOFFSET, PaperLengthInputSpec, AT(PaperSizeInfo_s, BottomHardClipOffset)),
};
const StyleRecord_s PaperSizeInfoRecord = recordOf(PaperSizeInfoFields);

// The sizes in the order of their slots (LETTER, DOUBLE, A3, A4, CUSTOM1, CUSTOM2).
const StyleField_s PaperSizesFields[] = {
    MakeStyleBlock(MacroSetValue_LETTER, PaperSizeInfoRecord, AT(Paper_s, PaperSizeInfo[0])),
    MakeStyleBlock(MacroSetValue_DOUBLE, PaperSizeInfoRecord, AT(Paper_s, PaperSizeInfo[1])),
    MakeStyleBlock(MacroSetValue_A3, PaperSizeInfoRecord, AT(Paper_s, PaperSizeInfo[2])),
    MakeStyleBlock(MacroSetValue_A4, PaperSizeInfoRecord, AT(Paper_s, PaperSizeInfo[3])),
    MakeStyleBlock(MacroSetValue_CUSTOM1, PaperSizeInfoRecord, AT(Paper_s, PaperSizeInfo[4])),
    MakeStyleBlock(MacroSetValue_CUSTOM2, PaperSizeInfoRecord, AT(Paper_s, PaperSizeInfo[5])),
};
const StyleRecord_s PaperSizesRecord = recordOf(PaperSizesFields);

const StyleField_s RegionFields[] = {
    Double(MacroSetValue_X1, XPaperCoordInputSpec, AT(Rect_s, X1)),
    Double(MacroSetValue_Y1, YPaperCoordInputSpec, AT(Rect_s, Y1)),
    Double(MacroSetValue_X2, XPaperCoordInputSpec, AT(Rect_s, X2)),
    Double(MacroSetValue_Y2, YPaperCoordInputSpec, AT(Rect_s, Y2)),
};
const StyleRecord_s RegionRecord = recordOf(RegionFields);

const StyleField_s PaperFields[] = {
    Enum(MacroSetValue_BACKGROUNDCOLOR, AT(Paper_s, BackgroundColor)),
    Bool(MacroSetValue_ISTRANSPARENT, AT(Paper_s, IsTransparent)),
    Bool(MacroSetValue_ORIENTPORTRAIT, AT(Paper_s, OrientPortrait)),
    Bool(MacroSetValue_SHOWGRID, AT(Paper_s, ShowGrid)),
    Bool(MacroSetValue_SHOWRULER, AT(Paper_s, ShowRuler)),
    Bool(MacroSetValue_SHOWPAPER, AT(Paper_s, ShowPaper)),
    Enum(MacroSetValue_PAPERSIZE, AT(Paper_s, PaperSize)),
    Enum(MacroSetValue_RULERSPACING, AT(Paper_s, RulerSpacing)),
    Enum(MacroSetValue_PAPERGRIDSPACING, AT(Paper_s, PaperGridSpacing)),
    MakeStyleBlock(MacroSetValue_PAPERSIZEINFO, PaperSizesRecord, SAME),
    MakeStyleBlock(MacroSetValue_REGIONINWORKAREA, RegionRecord, AT(Paper_s, RegionInWorkArea)),
};
const StyleRecord_s PaperRecord = recordOf(PaperFields);

// ---- $!PRINTSETUP (record GeneralBase_s) ----

const StyleField_s SpoolerFields[] = {
    String(MacroSetValue_HPGL2MONOSPOOLCMD, AT(GeneralBase_s, PrintSetup.HPGL2MonoSpoolCmd)),
    String(MacroSetValue_HPGL2COLORSPOOLCMD, AT(GeneralBase_s, PrintSetup.HPGL2ColorSpoolCmd)),
    String(MacroSetValue_HPGLSPOOLCMD, AT(GeneralBase_s, PrintSetup.HPGLSpoolCmd)),
    String(MacroSetValue_PSMONOSPOOLCMD, AT(GeneralBase_s, PrintSetup.PSMonoSpoolCmd)),
    String(MacroSetValue_PSCOLORSPOOLCMD, AT(GeneralBase_s, PrintSetup.PSColorSpoolCmd)),
    String(MacroSetValue_LGSPOOLCMD, AT(GeneralBase_s, PrintSetup.LGSpoolCmd)),
};
const StyleRecord_s SpoolerRecord = recordOf(SpoolerFields);

const StyleField_s JobControlFields[] = {
    String(MacroSetValue_HPGLMOPUPSTR, AT(GeneralBase_s, PrintSetup.HPGLMopupStr)),
    String(MacroSetValue_HPGL2MOPUPSTR, AT(GeneralBase_s, PrintSetup.HPGL2MopupStr)),
    String(MacroSetValue_POSTMOPUPSTR, AT(GeneralBase_s, PrintSetup.PostMopupStr)),
    String(MacroSetValue_LGMOPUPSTR, AT(GeneralBase_s, PrintSetup.LGMopupStr)),
    String(MacroSetValue_HPGLSETUPSTR, AT(GeneralBase_s, PrintSetup.HPGLSetupStr)),
    String(MacroSetValue_HPGL2SETUPSTR, AT(GeneralBase_s, PrintSetup.HPGL2SetupStr)),
    String(MacroSetValue_POSTSETUPSTR, AT(GeneralBase_s, PrintSetup.PostSetupStr)),
    String(MacroSetValue_LGSETUPSTR, AT(GeneralBase_s, PrintSetup.LGSetupStr)),
};
const StyleRecord_s JobControlRecord = recordOf(JobControlFields);

// The pen rows BLACKPEN..LABELPEN follow one another in the order of PlotterPenMap.
template <int N>
void *plotterPenAt(void *record) {
    return &static_cast<GeneralBase_s *>(record)->PrintSetup.PlotterPenMap[N];
}
template <size_t... N>
constexpr std::array<StyleField_s, sizeof...(N)> plotterPenFields(std::index_sequence<N...>) {
    return {Int(MacroSetValue_BLACKPEN + int(N), PenNumberInputSpec, &plotterPenAt<int(N)>)...};
}
static_assert(MacroSetValue_LABELPEN - MacroSetValue_BLACKPEN + 1 == NumPlotterPens, "one row per pen");
const std::array<StyleField_s, NumPlotterPens> PlotterPenMapFields = plotterPenFields(std::make_index_sequence<NumPlotterPens>());
const StyleRecord_s PlotterPenMapRecord{PlotterPenMapFields.data(), PlotterPenMapFields.size()};

const StyleField_s PrintSetupFields[] = {
    Bool(MacroSetValue_SENDPRINTTOFILE, AT(GeneralBase_s, PrintToFile)),
    Int(MacroSetValue_PRECISION, ValuePrecisionInputSpec, AT(GeneralBase_s, PrintSetup.Precision)),
    Bool(MacroSetValue_FORCEEXTRA3DSORTING, AT(GeneralBase_s, PrintSetup.ForceExtra3DSorting)),
    Int(MacroSetValue_NUMLIGHTSOURCESHADES, AboveZeroSmIntegerInputSpec, AT(GeneralBase_s, PrintSetup.NumLightSourceShades)),
    Double(MacroSetValue_PLOTTERUNITSPERINCH, AboveZeroDoubleInputSpec, AT(GeneralBase_s, PrintSetup.PlotterUnitsPerInch)),
    Int(MacroSetValue_PENSPEED, AboveZeroSmIntegerInputSpec, AT(GeneralBase_s, PrintSetup.PenSpeed)),
    Int(MacroSetValue_RGBLEGENDOUTPUTRESOLUTION, AboveZeroLgIndexInputSpec, AT(GeneralBase_s, PrintSetup.RGBLegendOutputResolution)),
    Int(MacroSetValue_NUMHARDCOPYCOPIES, AboveZeroSmIntegerInputSpec, AT(GeneralBase_s, PrintSetup.NumHardcopyCopies)),
    Bool(MacroSetValue_LARGEPAPEROK, AT(GeneralBase_s, PrintSetup.LargePaperOk)),
    Enum(MacroSetValue_DRIVER, AT(GeneralBase_s, PrintSetup.Driver)),
    Enum(MacroSetValue_PALETTE, AT(GeneralBase_s, PrintSetup.Palette)),
    MakeStyleBlock(MacroSetValue_SPOOLER, SpoolerRecord, SAME),
    MakeStyleBlock(MacroSetValue_JOBCONTROL, JobControlRecord, SAME),
    Bool(MacroSetValue_USEISOLATIN1FONTSINPS, AT(GeneralBase_s, PrintSetup.UseISOLatin1FontsInPS)),
    MakeStyleBlock(MacroSetValue_PLOTTERPENMAP, PlotterPenMapRecord, SAME),
};
const StyleRecord_s PrintSetupRecord = recordOf(PrintSetupFields);

// ---- $!EXPORTSETUP (record GeneralBase_s) ----

const StyleField_s EPSPreviewImageFields[] = {
    Enum(MacroSetValue_IMAGETYPE, AT(EPSPreviewImage_s, ImageType)),
    Int(MacroSetValue_IMAGEWIDTH, ImageDimensionInputSpec, AT(EPSPreviewImage_s, ImageWidth)),
    Int(MacroSetValue_IMAGEHEIGHT, ImageDimensionInputSpec, AT(EPSPreviewImage_s, ImageHeight)),
    Int(MacroSetValue_GRAYSCALEDEPTH, GrayScaleDepthInputSpec, AT(EPSPreviewImage_s, GrayScaleDepth)),
};
const StyleRecord_s EPSPreviewImageRecord = recordOf(EPSPreviewImageFields);

const StyleField_s ExportSetupFields[] = {
    FileName(MacroSetValue_EXPORTFNAME, AT(GeneralBase_s, ExportFName)),
    Enum(MacroSetValue_EXPORTFORMAT, AT(GeneralBase_s, ExportSetup.ExportFormat)),
    MakeStyleBlock(MacroSetValue_EPSPREVIEWIMAGE, EPSPreviewImageRecord, AT(GeneralBase_s, ExportSetup.EPSPreviewImage)),
    Enum(MacroSetValue_SUNRASTERFORMAT, AT(GeneralBase_s, ExportSetup.SunRasterFormat)),
    Enum(MacroSetValue_EXPORTREGION, AT(GeneralBase_s, ExportSetup.ExportRegion)),
    Double(MacroSetValue_ANIMATIONSPEED, AboveZeroDoubleInputSpec, AT(GeneralBase_s, ExportSetup.AnimationSpeed)),
    Bool(MacroSetValue_CONVERTTO256COLORS, AT(GeneralBase_s, ExportSetup.ConvertTo256Colors)),
    Bool(MacroSetValue_USEMULTIPLECOLORTABLES, AT(GeneralBase_s, ExportSetup.UseMultipleColorTables)),
    Int(MacroSetValue_IMAGEWIDTH, ExportImageWidthInputSpec, AT(GeneralBase_s, ExportSetup.ImageWidth)),
    Bool(MacroSetValue_USESUPERSAMPLEANTIALIASING, AT(GeneralBase_s, ExportSetup.UseSuperSampleAntiAliasing)),
    Int(MacroSetValue_SUPERSAMPLEFACTOR, SuperSampleFactorInputSpec, AT(GeneralBase_s, ExportSetup.SuperSampleFactor)),
    Int(MacroSetValue_GRAYSCALEDEPTH, GrayScaleDepthInputSpec, AT(GeneralBase_s, ExportSetup.GrayScaleDepth)),
    Enum(MacroSetValue_TIFFBYTEORDER, AT(GeneralBase_s, ExportSetup.TIFFByteOrder)),
    Enum(MacroSetValue_JPEGENCODING, AT(GeneralBase_s, ExportSetup.JPEGEncoding)),
    Double(MacroSetValue_QUALITY, PercentageInputSpec, AT(GeneralBase_s, ExportSetup.Quality)),
    Enum(MacroSetValue_FLASHIMAGETYPE, AT(GeneralBase_s, ExportSetup.FlashImageType)),
    Enum(MacroSetValue_FLASHCOMPRESSIONTYPE, AT(GeneralBase_s, ExportSetup.FlashCompressionType)),
    Enum(MacroSetValue_PRINTRENDERTYPE, AT(GeneralBase_s, ExportSetup.PrintRenderType)),
    Enum(MacroSetValue_RESIZEFILTER, AT(GeneralBase_s, ExportSetup.ResizeFilter)),
};
const StyleRecord_s ExportSetupRecord = recordOf(ExportSetupFields);

// ---- $!FILECONFIG (record GeneralBase_s) ----

const StyleField_s LayoutConfigFields[] = {
    Bool(MacroSetValue_USERELATIVEPATHS, AT(GeneralBase_s, FileConfig.UseRelativePaths)),
    Bool(MacroSetValue_USERELATIVEPATHSINLAYOUTS, AT(GeneralBase_s, FileConfig.UseRelativePaths)),
    Bool(MacroSetValue_INCLUDEDATA, AT(GeneralBase_s, FileConfig.IncludeData)),
    Bool(MacroSetValue_INCLUDEPREVIEW, AT(GeneralBase_s, FileConfig.IncludePreview)),
};
const StyleRecord_s LayoutConfigRecord = recordOf(LayoutConfigFields);

const StyleField_s FNameExtensionFields[] = {
    String(MacroSetValue_INPUTDATAFILE, AT(FileKindTexts_s, InputDataFile)),
    String(MacroSetValue_OUTPUTASCIIDATAFILE, AT(FileKindTexts_s, OutputAsciiDataFile)),
    String(MacroSetValue_OUTPUTBINARYDATAFILE, AT(FileKindTexts_s, OutputBinaryDataFile)),
    String(MacroSetValue_LAYOUTFILE, AT(FileKindTexts_s, LayoutFile)),
    String(MacroSetValue_INPUTLAYOUTFILE, AT(FileKindTexts_s, InputLayoutFile)),
    String(MacroSetValue_OUTPUTLAYOUTFILE, AT(FileKindTexts_s, OutputLayoutFile)),
    String(MacroSetValue_OUTPUTLAYOUTPACKAGEFILE, AT(FileKindTexts_s, OutputLayoutPackageFile)),
    String(MacroSetValue_STYLEFILE, AT(FileKindTexts_s, StyleFile)),
    String(MacroSetValue_MACROFILE, AT(FileKindTexts_s, MacroFile)),
    String(MacroSetValue_EQUATIONFILE, AT(FileKindTexts_s, EquationFile)),
    String(MacroSetValue_COLORMAPFILE, AT(FileKindTexts_s, ColorMapFile)),
    String(MacroSetValue_IMPORTIMAGEFILE, AT(FileKindTexts_s, ImportImageFile)),
};
const StyleRecord_s FNameExtensionRecord = recordOf(FNameExtensionFields);

// The filters are the older fields of GeneralBase_s.
const StyleField_s FNameFilterFields[] = {
    String(MacroSetValue_INPUTDATAFILE, AT(GeneralBase_s, DataFileFilter)),
    String(MacroSetValue_OUTPUTASCIIDATAFILE, AT(GeneralBase_s, AsciiDataFileFilter)),
    String(MacroSetValue_OUTPUTBINARYDATAFILE, AT(GeneralBase_s, BinaryDataFileFilter)),
    String(MacroSetValue_LAYOUTFILE, AT(GeneralBase_s, LayoutFileFilter)),
    String(MacroSetValue_INPUTLAYOUTFILE, AT(GeneralBase_s, InputLayoutFileFilter)),
    String(MacroSetValue_OUTPUTLAYOUTFILE, AT(GeneralBase_s, OutputLayoutFileFilter)),
    String(MacroSetValue_OUTPUTLAYOUTPACKAGEFILE, AT(GeneralBase_s, LayoutPackageFileFilter)),
    String(MacroSetValue_STYLEFILE, AT(GeneralBase_s, StyleFileFilter)),
    String(MacroSetValue_MACROFILE, AT(GeneralBase_s, MacroFileFilter)),
    String(MacroSetValue_EQUATIONFILE, AT(GeneralBase_s, EquationFileFilter)),
    String(MacroSetValue_COLORMAPFILE, AT(GeneralBase_s, ColorMapFileFilter)),
    String(MacroSetValue_IMPORTIMAGEFILE, AT(GeneralBase_s, ImageFileFilter)),
};
const StyleRecord_s FNameFilterRecord = recordOf(FNameFilterFields);

const StyleField_s LoadOnDemandFields[] = {
    Bool(MacroSetValue_ALLOW, AT(GeneralBase_s, LoadOnDemandAllow)),
    Enum(MacroSetValue_UNLOADSTRATEGY, AT(GeneralBase_s, LoadOnDemandUnloadStrategy)),
    Enum(MacroSetValue_DATASTORESTRATEGY, AT(GeneralBase_s, LoadOnDemandDataStoreStrategy)),
};
const StyleRecord_s LoadOnDemandRecord = recordOf(LoadOnDemandFields);

const StyleField_s FileConfigFields[] = {
    String(MacroSetValue_TEMPFILEPATH, AT(GeneralBase_s, TempFilePath)),
    MakeStyleBlock(MacroSetValue_LAYOUTCONFIG, LayoutConfigRecord, SAME),
    // The older spelling of LAYOUTCONFIG USERELATIVEPATHS.
    Bool(MacroSetValue_USERELATIVEPATHSINLAYOUTS, AT(GeneralBase_s, FileConfig.UseRelativePaths)),
    MakeStyleBlock(MacroSetValue_FNAMEEXTENSION, FNameExtensionRecord, AT(GeneralBase_s, FileConfig.FNameExtension)),
    MakeStyleBlock(MacroSetValue_FNAMEFILTER, FNameFilterRecord, SAME),
    Enum(MacroSetValue_DATAFILEVARLOADMODE, AT(GeneralBase_s, DataFileVarLoadMode)),
    Bool(MacroSetValue_DOAUTOFNAMEEXTENSION, AT(GeneralBase_s, FileConfig.DoAutoFNameExtension)),
    Bool(MacroSetValue_DOAUTOFNAMEEXTENSIONWARNING, AT(GeneralBase_s, FileConfig.DoAutoFNameExtensionWarning)),
    Bool(MacroSetValue_USEMEMORYMAPPEDIO, AT(GeneralBase_s, UseMemoryMappedIO)),
    Long(MacroSetValue_MEMORYMAPPEDIOSIZETHRESHOLD, ZeroAndAboveLgIndexInputSpec, AT(GeneralBase_s, MemoryMappedIOSizeThreshold)),
    MakeStyleBlock(MacroSetValue_LOADONDEMAND, LoadOnDemandRecord, SAME),
    Bool(MacroSetValue_ASSIGNSTRANDIDS, AT(GeneralBase_s, AssignStrandIDs)),
    Bool(MacroSetValue_ADDZONESTOEXISTINGSTRANDS, AT(GeneralBase_s, FileConfig.AddZonesToExistingStrands)),
};
const StyleRecord_s FileConfigRecord = recordOf(FileConfigFields);

// ---- $!BASICCOLOR (record GeneralBase_s) ----

// The row of basic colour n: BLACK..WHITE and CUSTOM1..CUSTOM56 are runs of rows in colour order.
constexpr int basicColorRow(int n) {
    return n < 8 ? MacroSetValue_BLACK + n
                 : n < 64 ? MacroSetValue_CUSTOM1 + (n - 8) : n == 64 ? MacroSetValue_GRAY : MacroSetValue_DARKGRAY;
}
static_assert(MacroSetValue_WHITE - MacroSetValue_BLACK == 7 && MacroSetValue_CUSTOM56 - MacroSetValue_CUSTOM1 == 55,
              "basic colour rows in colour order");
template <int N>
void *basicColorAt(void *record) {
    return &static_cast<GeneralBase_s *>(record)->BasicColor[N];
}
template <size_t... N>
constexpr std::array<StyleField_s, sizeof...(N)> basicColorFields(std::index_sequence<N...>) {
    return {MakeStyleBlock(basicColorRow(int(N)), RGBRecord, &basicColorAt<int(N)>)...};
}
const std::array<StyleField_s, NumBasicColors> BasicColorFields = basicColorFields(std::make_index_sequence<NumBasicColors>());
const StyleRecord_s BasicColorRecord{BasicColorFields.data(), BasicColorFields.size()};

// ---- $!INTERFACE (record GeneralBase_s) ----

const StyleField_s MouseButtonFields[] = {
    Enum(MacroSetValue_BUTTONCLICK, AT(MouseButtonActions_s, ButtonClick)),
    Enum(MacroSetValue_SIMPLEDRAG, AT(MouseButtonActions_s, SimpleDrag)),
    Enum(MacroSetValue_CONTROLLEDDRAG, AT(MouseButtonActions_s, ControlledDrag)),
    Enum(MacroSetValue_ALTEDDRAG, AT(MouseButtonActions_s, AltedDrag)),
    Enum(MacroSetValue_SHIFTEDDRAG, AT(MouseButtonActions_s, ShiftedDrag)),
    Enum(MacroSetValue_CONTROLALTEDDRAG, AT(MouseButtonActions_s, ControlAltedDrag)),
    Enum(MacroSetValue_CONTROLSHIFTEDDRAG, AT(MouseButtonActions_s, ControlShiftedDrag)),
    Enum(MacroSetValue_ALTSHIFTEDDRAG, AT(MouseButtonActions_s, AltShiftedDrag)),
    Enum(MacroSetValue_CONTROLALTSHIFTEDDRAG, AT(MouseButtonActions_s, ControlAltShiftedDrag)),
};
const StyleRecord_s MouseButtonRecord = recordOf(MouseButtonFields);

const StyleField_s MouseActionsFields[] = {
    MakeStyleBlock(MacroSetValue_MIDDLEBUTTON, MouseButtonRecord, AT(GeneralBase_s, Interface.MiddleButton)),
    MakeStyleBlock(MacroSetValue_RIGHTBUTTON, MouseButtonRecord, AT(GeneralBase_s, Interface.RightButton)),
};
const StyleRecord_s MouseActionsRecord = recordOf(MouseActionsFields);

const StyleField_s TranslationFields[] = {
    Double(MacroSetValue_STEPSIZE, PercentageInputSpec, AT(InterfaceSteps_s, StepSize)),
    Double(MacroSetValue_SMALLSTEP, PercentageInputSpec, AT(InterfaceSteps_s, SmallStep)),
    Double(MacroSetValue_MEDIUMSTEP, PercentageInputSpec, AT(InterfaceSteps_s, MediumStep)),
    Double(MacroSetValue_LARGESTEP, PercentageInputSpec, AT(InterfaceSteps_s, LargeStep)),
};
const StyleRecord_s TranslationRecord = recordOf(TranslationFields);

const StyleField_s ScaleFields[] = {
    Double(MacroSetValue_STEPSIZE, ScaleStepInputSpec, AT(GeneralBase_s, Interface.Scale.StepSize)),
    Double(MacroSetValue_SMALLSTEP, ScaleStepInputSpec, AT(GeneralBase_s, Interface.Scale.SmallStep)),
    Double(MacroSetValue_MEDIUMSTEP, ScaleStepInputSpec, AT(GeneralBase_s, Interface.Scale.MediumStep)),
    Double(MacroSetValue_LARGESTEP, ScaleStepInputSpec, AT(GeneralBase_s, Interface.Scale.LargeStep)),
    Double(MacroSetValue_ZOOMSCALEPERFRAMEUNIT, AboveZeroDoubleInputSpec, AT(GeneralBase_s, Interface.ZoomScalePerFrameUnit)),
};
const StyleRecord_s ScaleRecord = recordOf(ScaleFields);

const StyleField_s RotationFields[] = {
    Enum(MacroSetValue_ROTATIONMODE, AT(InterfaceRotation_s, RotationMode)),
    Double(MacroSetValue_CURRENTANGLE, AngleInputSpec, AT(InterfaceRotation_s, CurrentAngle)),
    Double(MacroSetValue_SMALLANGLE, AngleInputSpec, AT(InterfaceRotation_s, SmallAngle)),
    Double(MacroSetValue_MEDIUMANGLE, AngleInputSpec, AT(InterfaceRotation_s, MediumAngle)),
    Double(MacroSetValue_LARGEANGLE, AngleInputSpec, AT(InterfaceRotation_s, LargeAngle)),
    Bool(MacroSetValue_SHOWGEOMS, AT(InterfaceRotation_s, ShowGeoms)),
};
const StyleRecord_s RotationRecord = recordOf(RotationFields);

// DERIVATIVEBOUNDARY and VARIABLEDERIVATIONMETHOD are the fields $!DATASETUP sets.
const StyleField_s InterfaceDataFields[] = {
    Enum(MacroSetValue_SMOOTHBNDRYCOND, AT(GeneralBase_s, Interface.Data.SmoothBndryCond)),
    Int(MacroSetValue_NUMSMOOTHPASSES, AboveZeroLgIndexInputSpec, AT(GeneralBase_s, Interface.Data.NumSmoothPasses)),
    Enum(MacroSetValue_VARIABLEDERIVATIONMETHOD, AT(GeneralBase_s, DataSetup.VariableDerivationMethod)),
    Enum(MacroSetValue_VOLUMECELLINTERPOLATIONMODE, AT(GeneralBase_s, Interface.Data.VolumeCellInterpolationMode)),
    Double(MacroSetValue_SMOOTHWEIGHT, SmoothWeightInputSpec, AT(GeneralBase_s, Interface.Data.SmoothWeight)),
    Double(MacroSetValue_INVDISTEXPONENT, ZeroAndAboveDoubleInputSpec, AT(GeneralBase_s, Interface.Data.InvDistExponent)),
    Double(MacroSetValue_INVDISTMINRADIUS, ZeroAndAboveDoubleInputSpec, AT(GeneralBase_s, Interface.Data.InvDistMinRadius)),
    Double(MacroSetValue_LINEARINTERPCONST, DoubleInputSpec, AT(GeneralBase_s, Interface.Data.LinearInterpConst)),
    Enum(MacroSetValue_LINEARINTERPMODE, AT(GeneralBase_s, Interface.Data.LinearInterpMode)),
    Enum(MacroSetValue_INTERPPTSELECTION, AT(GeneralBase_s, Interface.Data.InterpPtSelection)),
    Int(MacroSetValue_INTERPNPOINTS, AboveZeroLgIndexInputSpec, AT(GeneralBase_s, Interface.Data.InterpNPoints)),
    Double(MacroSetValue_KRIGRANGE, ZeroAndAboveDoubleInputSpec, AT(GeneralBase_s, Interface.Data.KrigRange)),
    Double(MacroSetValue_KRIGZEROVALUE, ZeroToOneInputSpec, AT(GeneralBase_s, Interface.Data.KrigZeroValue)),
    Enum(MacroSetValue_KRIGDRIFT, AT(GeneralBase_s, Interface.Data.KrigDrift)),
    Enum(MacroSetValue_DERIVATIVEBOUNDARY, AT(GeneralBase_s, DataSetup.DerivativeBoundary)),
    Double(MacroSetValue_TRIANGLEKEEPFACTOR, ZeroToOneInputSpec, AT(GeneralBase_s, Interface.Data.TriangleKeepFactor)),
    Enum(MacroSetValue_CONTLINECREATEMODE, AT(GeneralBase_s, Interface.Data.ContLineCreateMode)),
};
const StyleRecord_s InterfaceDataRecord = recordOf(InterfaceDataFields);

const StyleField_s OpenGLRenderingFields[] = {
    Bool(MacroSetValue_ADJUSTRECTANGLERIGHTANDBOTTOM, AT(OpenGLRendering_s, AdjustRectangleRightAndBottom)),
    Bool(MacroSetValue_DOEXTRADRAWFORLASTPIXEL, AT(OpenGLRendering_s, DoExtraDrawForLastPixel)),
    Enum(MacroSetValue_STIPPLEALLLINES, AT(OpenGLRendering_s, StippleAllLines)),
    Int(MacroSetValue_DEPTHBUFFERSIZE, DepthBufferSizeInputSpec, AT(OpenGLRendering_s, DepthBufferSize)),
    Int(MacroSetValue_MAXSTRIPLENGTH, AboveZeroLgIndexInputSpec, AT(OpenGLRendering_s, MaxStripLength)),
    Int(MacroSetValue_MAXPRIMATIVESPERBLOCK, AboveZeroLgIndexInputSpec, AT(OpenGLRendering_s, MaxPrimativesPerBlock)),
    Int(MacroSetValue_MINBITSPERRGBPLANE, ZeroAndAboveSmIntegerInputSpec, AT(OpenGLRendering_s, MinBitsPerRGBPlane)),
    Double(MacroSetValue_POLYGONOFFSETEXTBIASFACTOR, DoubleInputSpec, AT(OpenGLRendering_s, PolygonOffsetExtBiasFactor)),
    Bool(MacroSetValue_USETRIANGLESTRIPS, AT(OpenGLRendering_s, UseTriangleStrips)),
    Bool(MacroSetValue_USEQUADSTRIPS, AT(OpenGLRendering_s, UseQuadStrips)),
    Bool(MacroSetValue_TRIANGULATEFILLEDPOLYGONS, AT(OpenGLRendering_s, TriangulateFilledPolygons)),
    Bool(MacroSetValue_USEGLCOLORMATERIALFUNCTION, AT(OpenGLRendering_s, UseGLColorMaterialFunction)),
    Bool(MacroSetValue_CONSTANTLYUSESCISSORING, AT(OpenGLRendering_s, ConstantlyUseScissoring)),
    Int(MacroSetValue_MAXTEXTURESIZE, AboveZeroLgIndexInputSpec, AT(OpenGLRendering_s, MaxTextureSize)),
    Bool(MacroSetValue_FORCESMOOTHSHADINGFORLIGHTING, AT(OpenGLRendering_s, ForceSmoothShadingForLighting)),
};
const StyleRecord_s OpenGLRenderingRecord = recordOf(OpenGLRenderingFields);

const StyleField_s OpenGLConfigFields[] = {
    Bool(MacroSetValue_ALLOWHWACCELERATION, AT(OpenGLConfig_s, AllowHWAcceleration)),
    Bool(MacroSetValue_RUNDISPLAYLISTSAFTERBUILDING, AT(OpenGLConfig_s, RunDisplayListsAfterBuilding)),
    Bool(MacroSetValue_INCLUDEBACKBUFFERDURINGFRONTBUFFERDRAWS, AT(OpenGLConfig_s, IncludeBackBufferDuringFrontBufferDraws)),
    Double(MacroSetValue_MAXIMAGEFILTERMAGNIFICATION, AboveZeroDoubleInputSpec, AT(OpenGLConfig_s, MaxImageFilterMagnification)),
    MakeStyleBlock(MacroSetValue_SCREENRENDERING, OpenGLRenderingRecord, AT(OpenGLConfig_s, ScreenRendering)),
    MakeStyleBlock(MacroSetValue_IMAGERENDERING, OpenGLRenderingRecord, AT(OpenGLConfig_s, ImageRendering)),
};
const StyleRecord_s OpenGLConfigRecord = recordOf(OpenGLConfigFields);

#define IN_INTERFACE(member) AT(GeneralBase_s, Interface.member)
const StyleField_s InterfaceFields[] = {
    Int(MacroSetValue_MINIMUMTIMEOUT, ZeroAndAboveLgIndexInputSpec, IN_INTERFACE(MinimumTimeout)),
    Bool(MacroSetValue_USEAPPROXIMATEPLOTS, IN_INTERFACE(UseApproximatePlots)),
    Enum(MacroSetValue_PLOTAPPROXIMATIONMODE, IN_INTERFACE(PlotApproximationMode)),
    Bool(MacroSetValue_SHOWTEXTGEOMSINAPPROXVIEWS, IN_INTERFACE(ShowTextGeomsInApproxViews)),
    Int(MacroSetValue_NUMPTSALLOWEDBEFOREAPPROX, ZeroAndAboveLgIndexInputSpec, IN_INTERFACE(NumPtsAllowedBeforeApprox)),
    Double(MacroSetValue_PERCENTAGEOFPOINTSTOKEEP, PercentageInputSpec, IN_INTERFACE(PercentageOfPointsToKeep)),
    Bool(MacroSetValue_SHOWSTATUSLINE, IN_INTERFACE(ShowStatusLine)),
    Bool(MacroSetValue_SHOWCONTINUOUSSTATUS, IN_INTERFACE(ShowContinuousStatus)),
    Bool(MacroSetValue_SHOWCOORDINATES, IN_INTERFACE(ShowCoordinates)),
    Bool(MacroSetValue_SHOWCOORDINATESWITHSELECTORADJUSTOR, IN_INTERFACE(ShowCoordinatesWithSelectorAdjustor)),
    Bool(MacroSetValue_USEOFFSCREENBITMAP, IN_INTERFACE(UseOffscreenBitmap)),
    Bool(MacroSetValue_FASTLINEPATTERNSONSCREEN, IN_INTERFACE(FastLinePatternsOnScreen)),
    Bool(MacroSetValue_USEDISPLAYLISTS, IN_INTERFACE(UseDisplayLists)),
    Bool(MacroSetValue_CACHELIGHTDISPLAYLISTSONLY, IN_INTERFACE(CacheLightDisplayListsOnly)),
    Bool(MacroSetValue_USEDOUBLEFORDISPLAYLISTS, IN_INTERFACE(UseDoubleForDisplayLists)),
    Int(MacroSetValue_MINPIXELSFORDRAG, ZeroAndAboveSmIntegerInputSpec, IN_INTERFACE(MinPixelsForDrag)),
    Bool(MacroSetValue_AUTOREDRAWISACTIVE, IN_INTERFACE(AutoRedrawIsActive)),
    Enum(MacroSetValue_SIDEBARSIZING, IN_INTERFACE(SidebarSizing)),
    Double(MacroSetValue_PICKHANDLEWIDTH, PaperLengthInputSpec, IN_INTERFACE(PickHandleWidth)),
    Double(MacroSetValue_RULERTHICKNESS, PaperLengthInputSpec, IN_INTERFACE(RulerThickness)),
    Double(MacroSetValue_RULERPADDING, PaperLengthInputSpec, IN_INTERFACE(RulerPadding)),
    String(MacroSetValue_UNIXHELPBROWSERCMD, IN_INTERFACE(UnixHelpBrowserCmd)),
    Int(MacroSetValue_XORCOLOR, ColorIndexInputSpec, IN_INTERFACE(XORColor)),
    Bool(MacroSetValue_USEINDEPENDENTCOLORMAP, IN_INTERFACE(UseIndependentColorMap)),
    Bool(MacroSetValue_BEEPONFRAMEINTERRUPT, IN_INTERFACE(BeepOnFrameInterrupt)),
    Bool(MacroSetValue_USEOPENGL, IN_INTERFACE(UseOpenGL)),
    Bool(MacroSetValue_SECURESPOOLCOMMANDS, IN_INTERFACE(SecureSpoolCommands)),
    Bool(MacroSetValue_OKTOEXECUTESYSTEMCOMMAND, AT(GeneralBase_s, OkToExecuteSystemCommand)),
    Bool(MacroSetValue_SHOWWAITDIALOGS, IN_INTERFACE(ShowWaitDialogs)),
    MakeStyleBlock(MacroSetValue_MOUSEACTIONS, MouseActionsRecord, SAME),
    Int(MacroSetValue_MAXNUMUNDOLEVELS, ZeroAndAboveLgIndexInputSpec, AT(GeneralBase_s, NumUndoLevels)),
    Int(MacroSetValue_NUMMOUSEBUTTONS, NumMouseButtonsInputSpec, IN_INTERFACE(NumMouseButtons)),
    Enum(MacroSetValue_QUICKCOLORMODE, IN_INTERFACE(QuickColorMode)),
    Bool(MacroSetValue_CONSERVEDERIVEDVARIABLESPACE, IN_INTERFACE(ConserveDerivedVariableSpace)),
    Bool(MacroSetValue_COLLECTTIMESTATISTICS, IN_INTERFACE(CollectTimeStatistics)),
    Bool(MacroSetValue_TRYTOUSEDOUBLEBUFFER, IN_INTERFACE(TryToUseDoubleBuffer)),
    Bool(MacroSetValue_USEDOUBLEBUFFERING, IN_INTERFACE(UseDoubleBuffering)),
    Int(MacroSetValue_NUMCOLORCELLSTORETURN, ZeroAndAboveSmIntegerInputSpec, IN_INTERFACE(NumColorCellsToReturn)),
    Bool(MacroSetValue_SHOWFRAMEBORDERSWHENOFF, IN_INTERFACE(ShowFrameBordersWhenOff)),
    Enum(MacroSetValue_BACKINGSTOREMODE, IN_INTERFACE(BackingStoreMode)),
    Bool(MacroSetValue_USEMOD2MASKFORALTDETECTION, IN_INTERFACE(UseMod2MaskForAltDetection)),
    Bool(MacroSetValue_PRINTDEBUG, AT(GeneralBase_s, Debug)),
    Bool(MacroSetValue_ENABLEDELAYS, AT(GeneralBase_s, EnableDelays)),
    Bool(MacroSetValue_ENABLEPAUSES, AT(GeneralBase_s, EnablePauses)),
    Bool(MacroSetValue_ENABLEWARNINGS, AT(GeneralBase_s, EnableWarnings)),
    Bool(MacroSetValue_ENABLEINTERRUPTS, AT(GeneralBase_s, EnableInterrupts)),
    Int(MacroSetValue_INTERRUPTCHECKINGFREQUENCY, AboveZeroLgIndexInputSpec, AT(GeneralBase_s, InterruptCheckingFrequency)),
    Bool(MacroSetValue_LOADADDONSUSINGLAZYRELOCATE, IN_INTERFACE(LoadAddOnsUsingLazyRelocate)),
    Bool(MacroSetValue_USESTROKEFONTSONSCREEN, IN_INTERFACE(UseStrokeFontsOnScreen)),
    Bool(MacroSetValue_USESTROKEFONTSFOR3DTEXT, IN_INTERFACE(UseStrokeFontsFor3DText)),
    Int(MacroSetValue_MAXCUSTOMCOLORSININTERFACE, NumCustomColorsInputSpec, IN_INTERFACE(MaxCustomColorsInInterface)),
    Int(MacroSetValue_XPGONFILLOFFSET, PixelOffsetInputSpec, IN_INTERFACE(XPgonFillOffset)),
    Int(MacroSetValue_YPGONFILLOFFSET, PixelOffsetInputSpec, IN_INTERFACE(YPgonFillOffset)),
    Bool(MacroSetValue_INITIALPLOTFIRSTZONEONLY, AT(GeneralBase_s, InitialPlotFirstZoneOnly)),
    Enum(MacroSetValue_INITIALPLOTTYPE, AT(GeneralBase_s, InitialPlotType)),
    Bool(MacroSetValue_USEINITIALPLOTDIALOG, AT(GeneralBase_s, UseInitialPlotDialog)),
    Bool(MacroSetValue_SHOWTOOLTIPS, IN_INTERFACE(ShowTooltips)),
    Bool(MacroSetValue_ALLOWDATAPOINTSELECT, IN_INTERFACE(AllowDataPointSelect)),
    Bool(MacroSetValue_ALLOWDATAPOINTADJUST, IN_INTERFACE(AllowDataPointAdjust)),
    Bool(MacroSetValue_USEORVANEXPRINTDRIVERS, IN_INTERFACE(UseOrvanexPrintDrivers)),
    Enum(MacroSetValue_SCRBACKGROUNDCOLOR, IN_INTERFACE(ScrBackgroundColor)),
    MakeStyleBlock(MacroSetValue_TRANSLATION, TranslationRecord, IN_INTERFACE(Translation)),
    MakeStyleBlock(MacroSetValue_SCALE, ScaleRecord, SAME),
    MakeStyleBlock(MacroSetValue_ROTATION, RotationRecord, IN_INTERFACE(Rotation)),
    MakeStyleBlock(MacroSetValue_DATA, InterfaceDataRecord, SAME),
    MakeStyleBlock(MacroSetValue_OPENGLCONFIG, OpenGLConfigRecord, IN_INTERFACE(OpenGLConfig)),
    Enum(MacroSetValue_INITIALFIELDPROBEDIALOGPAGE, IN_INTERFACE(InitialFieldProbeDialogPage)),
};
#undef IN_INTERFACE
const StyleRecord_s InterfaceRecord = recordOf(InterfaceFields);

// ---- $!BASICSIZE ----

// The five sizes of one list, under the input rules of that list.
#define SIZE_LIST(name, rules)                                                          \
    const StyleField_s name##Fields[] = {                                              \
        Double(MacroSetValue_TINY, rules, AT(SizeList_s, Tiny)),                        \
        Double(MacroSetValue_SMALL, rules, AT(SizeList_s, Small)),                      \
        Double(MacroSetValue_MEDIUM, rules, AT(SizeList_s, Medium)),                    \
        Double(MacroSetValue_LARGE, rules, AT(SizeList_s, Large)),                      \
        Double(MacroSetValue_HUGE, rules, AT(SizeList_s, Huge)),                        \
    };                                                                                 \
    const StyleRecord_s name##Record = recordOf(name##Fields)
SIZE_LIST(LineThicknessSizes, LineThicknessInputSpec);
SIZE_LIST(FrameSizes, FrameSizeInputSpec);
SIZE_LIST(PointTextSizes, PointTextSizeInputSpec);
SIZE_LIST(FrameTextSizes, FrameTextSizeInputSpec);
#undef SIZE_LIST

const StyleField_s BasicSizeFields[] = {
    MakeStyleBlock(MacroSetValue_LINETHICKNESSES, LineThicknessSizesRecord, AT(BasicSize_s, LineThicknesses)),
    MakeStyleBlock(MacroSetValue_TICKLENGTHS, FrameSizesRecord, AT(BasicSize_s, TickLengths)),
    MakeStyleBlock(MacroSetValue_SYMBOLSIZES, FrameSizesRecord, AT(BasicSize_s, SymbolSizes)),
    MakeStyleBlock(MacroSetValue_LINEPATLENGTHS, FrameSizesRecord, AT(BasicSize_s, LinePatLengths)),
    MakeStyleBlock(MacroSetValue_ARROWHEADSIZES, FrameSizesRecord, AT(BasicSize_s, ArrowheadSizes)),
    MakeStyleBlock(MacroSetValue_POINTTEXTSIZES, PointTextSizesRecord, AT(BasicSize_s, PointTextSizes)),
    MakeStyleBlock(MacroSetValue_FRAMETEXTSIZES, FrameTextSizesRecord, AT(BasicSize_s, FrameTextSizes)),
};
const StyleRecord_s BasicSizeRecord = recordOf(BasicSizeFields);

// ---- $!DEFAULTTEXT, $!DEFAULTGEOM ----

const StyleField_s TextShapeFields[] = {
    Enum(MacroSetValue_FONT, AT(TextStyle_s, Font)),
    WithHooks(Double(MacroSetValue_HEIGHT, TextHeightInputSpec, AT(TextStyle_s, Height)), textHeightRules, nullptr),
    Enum(MacroSetValue_SIZEUNITS, AT(TextStyle_s, SizeUnits)),
};
const StyleRecord_s TextShapeRecord = recordOf(TextShapeFields);

const StyleField_s TextBoxFields[] = {
    Enum(MacroSetValue_BOXTYPE, AT(TextStyle_s, BoxType)),
    Double(MacroSetValue_MARGIN, PercentageInputSpec, AT(TextStyle_s, BoxMargin)),
    Double(MacroSetValue_LINETHICKNESS, LineThicknessInputSpec, AT(TextStyle_s, BoxLineThickness)),
    Enum(MacroSetValue_COLOR, AT(TextStyle_s, BoxColor)),
    Enum(MacroSetValue_FILLCOLOR, AT(TextStyle_s, BoxFillColor)),
};
const StyleRecord_s TextBoxRecord = recordOf(TextBoxFields);

const StyleField_s DefaultTextFields[] = {
    Enum(MacroSetValue_POSITIONCOORDSYS, AT(TextStyle_s, PositionCoordSys)),
    Bool(MacroSetValue_ATTACHTOZONE, AT(TextStyle_s, AttachToZone)),
    EntIndex(MacroSetValue_ZONE, AT(TextStyle_s, Zone)),
    Enum(MacroSetValue_COLOR, AT(TextStyle_s, Color)),
    MakeStyleBlock(MacroSetValue_TEXTSHAPE, TextShapeRecord, SAME),
    MakeStyleBlock(MacroSetValue_BOX, TextBoxRecord, SAME),
    Double(MacroSetValue_ANGLE, TextAngleInputSpec, AT(TextStyle_s, Angle)),
    Enum(MacroSetValue_ANCHOR, AT(TextStyle_s, Anchor)),
    Double(MacroSetValue_LINESPACING, AboveZeroDoubleInputSpec, AT(TextStyle_s, LineSpacing)),
    Enum(MacroSetValue_SCOPE, AT(TextStyle_s, Scope)),
    Enum(MacroSetValue_CLIPPING, AT(TextStyle_s, Clipping)),
    String(MacroSetValue_MACROFUNCTIONCOMMAND, AT(TextStyle_s, MacroFunctionCommand)),
};
const StyleRecord_s DefaultTextRecord = recordOf(DefaultTextFields);

const StyleField_s DefaultGeomFields[] = {
    Enum(MacroSetValue_GEOMTYPE, AT(GeomStyle_s, GeomType)),
    Enum(MacroSetValue_POSITIONCOORDSYS, AT(GeomStyle_s, PositionCoordSys)),
    Bool(MacroSetValue_ATTACHTOZONE, AT(GeomStyle_s, AttachToZone)),
    EntIndex(MacroSetValue_ZONE, AT(GeomStyle_s, Zone)),
    Enum(MacroSetValue_COLOR, AT(GeomStyle_s, Color)),
    Bool(MacroSetValue_ISFILLED, AT(GeomStyle_s, IsFilled)),
    Enum(MacroSetValue_FILLCOLOR, AT(GeomStyle_s, FillColor)),
    Enum(MacroSetValue_LINEPATTERN, AT(GeomStyle_s, LinePattern)),
    Double(MacroSetValue_PATTERNLENGTH, FrameSizeInputSpec, AT(GeomStyle_s, PatternLength)),
    Double(MacroSetValue_LINETHICKNESS, LineThicknessInputSpec, AT(GeomStyle_s, LineThickness)),
    Enum(MacroSetValue_SCOPE, AT(GeomStyle_s, Scope)),
    Enum(MacroSetValue_DRAWORDER, AT(GeomStyle_s, DrawOrder)),
    Enum(MacroSetValue_CLIPPING, AT(GeomStyle_s, Clipping)),
    String(MacroSetValue_MACROFUNCTIONCOMMAND, AT(GeomStyle_s, MacroFunctionCommand)),
    Enum(MacroSetValue_ARROWHEADSTYLE, AT(GeomStyle_s, ArrowheadStyle)),
    Enum(MacroSetValue_ARROWHEADATTACHMENT, AT(GeomStyle_s, ArrowheadAttachment)),
    Double(MacroSetValue_ARROWHEADSIZE, FrameSizeInputSpec, AT(GeomStyle_s, ArrowheadSize)),
    Double(MacroSetValue_ARROWHEADANGLE, AngleInputSpec, AT(GeomStyle_s, ArrowheadAngle)),
    Int(MacroSetValue_NUMELLIPSEPTS, NumberOfEllipsePointsInputSpec, AT(GeomStyle_s, NumEllipsePts)),
    Bool(MacroSetValue_MAINTAINASPECTRATIO, AT(GeomStyle_s, MaintainAspectRatio)),
    Enum(MacroSetValue_RESIZEFILTER, AT(GeomStyle_s, ResizeFilter)),
};
const StyleRecord_s DefaultGeomRecord = recordOf(DefaultGeomFields);

// ---- $!FONTADJUST, $!FRAMESETUP, $!DATASETUP, $!GLOBALFRAME ----

const StyleField_s FontAdjustFields[] = {
    Int(MacroSetValue_INTERCHARSPACING, InterCharSpacingInputSpec, AT(FontAdjust_s, InterCharSpacing)),
    Double(MacroSetValue_SUBSUPFRACTION, ZeroToOneInputSpec, AT(FontAdjust_s, SubSupFraction)),
    Double(MacroSetValue_BOLDFACTOR, AboveZeroDoubleInputSpec, AT(FontAdjust_s, BoldFactor)),
    Double(MacroSetValue_STROKEFONTLINETHICKNESS, ZeroToOneInputSpec, AT(FontAdjust_s, StrokeFontLineThickness)),
};
const StyleRecord_s FontAdjustRecord = recordOf(FontAdjustFields);

const StyleField_s DefaultStreamtraceFields[] = {
    Enum(MacroSetValue_STREAMTYPE, AT(DefaultStreamtrace_s, StreamType)),
    Enum(MacroSetValue_DIRECTION, AT(DefaultStreamtrace_s, Direction)),
};
const StyleRecord_s DefaultStreamtraceRecord = recordOf(DefaultStreamtraceFields);

const StyleField_s FrameSetupFields[] = {
    Double(MacroSetValue_VECTMINLEN, FrameSizeInputSpec, AT(FrameSetup_s, VectMinLen)),
    Double(MacroSetValue_VECTDEFLEN, FrameSizeInputSpec, AT(FrameSetup_s, VectDefLen)),
    Bool(MacroSetValue_ALIGNINGCONTOURLABELS, AT(FrameSetup_s, AligningContourLabels)),
    Int(MacroSetValue_DEFNUMLEVELS, AboveZeroSmIntegerInputSpec, AT(FrameSetup_s, DefNumLevels)),
    Int(MacroSetValue_DEF3DNUMLEVELS, AboveZeroSmIntegerInputSpec, AT(FrameSetup_s, Def3DNumLevels)),
    Double(MacroSetValue_INITIAL3DSCALE, AboveZeroDoubleInputSpec, AT(FrameSetup_s, Initial3DScale)),
    Bool(MacroSetValue_FITINITIALFRAMETOWORKSPACE, AT(FrameSetup_s, FitInitialFrameToWorkspace)),
    Bool(MacroSetValue_USECOMMONSORTSTACK, AT(FrameSetup_s, UseCommonSortStack)),
    MakeStyleBlock(MacroSetValue_DEFAULT2DSTREAMTRACE, DefaultStreamtraceRecord, AT(FrameSetup_s, Default2DStreamtrace)),
    MakeStyleBlock(MacroSetValue_DEFAULT3DSTREAMTRACE, DefaultStreamtraceRecord, AT(FrameSetup_s, Default3DStreamtrace)),
    Int(MacroSetValue_NUMSTREAMRAKEPOINTS, AboveZeroSmIntegerInputSpec, AT(FrameSetup_s, NumStreamRakePoints)),
    Double(MacroSetValue_RODRIBBONDEFLEN, FrameSizeInputSpec, AT(FrameSetup_s, RodRibbonDefLen)),
};
const StyleRecord_s FrameSetupRecord = recordOf(FrameSetupFields);

const StyleField_s DataSetupFields[] = {
    Enum(MacroSetValue_SCRATCHDATAFIELDTYPE, AT(DataSetup_s, ScratchDataFieldType)),
    Enum(MacroSetValue_DERIVATIVEBOUNDARY, AT(DataSetup_s, DerivativeBoundary)),
    Enum(MacroSetValue_VARIABLEDERIVATIONMETHOD, AT(DataSetup_s, VariableDerivationMethod)),
};
const StyleRecord_s DataSetupRecord = recordOf(DataSetupFields);

const StyleField_s GlobalFrameFields[] = {
    Bool(MacroSetValue_SNAPTOGRID, AT(GlobalFrame_s, SnapToGrid)),
    Bool(MacroSetValue_SNAPTOPAPER, AT(GlobalFrame_s, SnapToPaper)),
    Double(MacroSetValue_FRAMEHEADERHEIGHT, PaperLengthInputSpec, AT(GlobalFrame_s, FrameHeaderHeight)),
    String(MacroSetValue_FRAMEHEADERFORMAT, AT(GlobalFrame_s, FrameHeaderFormat)),
};
const StyleRecord_s GlobalFrameRecord = recordOf(GlobalFrameFields);

// ---- $!GLOBALCOLORMAP n ----

const StyleField_s ControlPointFields[] = {
    InColorTables(Double(MacroSetValue_COLORMAPFRACTION, ZeroToOneInputSpec, AT(ColorMapControlPoint_s, Location))),
    MakeStyleBlock(MacroSetValue_LEADRGB, RGBRecord, AT(ColorMapControlPoint_s, LeadRGB)),
    MakeStyleBlock(MacroSetValue_TRAILRGB, RGBRecord, AT(ColorMapControlPoint_s, TrailRGB)),
};
const StyleRecord_s ControlPointRecord = recordOf(ControlPointFields);

// Control point m of a band, counted from 1 up to the band's point count.
void *controlPointAt(void *record, int number) {
    ColorMapBand_s *band = static_cast<ColorMapBand_s *>(record);
    return number >= 1 && number <= band->NumControlPoints ? &band->ControlPoint[number - 1] : nullptr;
}

const StyleField_s ColorMapBandFields[] = {
    InColorTables(Int(MacroSetValue_NUMCONTROLPOINTS, ControlPointCountInputSpec, AT(ColorMapBand_s, NumControlPoints))),
    MakeStyleNumberedBlock(MacroSetValue_CONTROLPOINT, ControlPointRecord, controlPointAt, "Invalid color map control point"),
};
const StyleRecord_s ColorMapBandRecord = recordOf(ColorMapBandFields);

const StyleField_s ColorMapFields[] = {
    InColorTables(Enum(MacroSetValue_CONTOURCOLORMAP, AT(ColorMap_s, ContourColorMap))),
    MakeStyleBlock(MacroSetValue_TWOCOLOR, ColorMapBandRecord, AT(ColorMap_s, TwoColor)),
    MakeStyleBlock(MacroSetValue_SMRAINBOW, ColorMapBandRecord, AT(ColorMap_s, SmRainbow)),
    MakeStyleBlock(MacroSetValue_LGRAINBOW, ColorMapBandRecord, AT(ColorMap_s, LgRainbow)),
    MakeStyleBlock(MacroSetValue_MODERN, ColorMapBandRecord, AT(ColorMap_s, Modern)),
    MakeStyleBlock(MacroSetValue_GRAYSCALE, ColorMapBandRecord, AT(ColorMap_s, GrayScale)),
    MakeStyleBlock(MacroSetValue_USERDEFINED, ColorMapBandRecord, AT(ColorMap_s, UserDefined)),
};
const StyleRecord_s ColorMapRecord = recordOf(ColorMapFields);

// Colour map group n, counted from 1.
void *colorMapGroupAt(void *record, int number) {
    GeneralBase_s *base = static_cast<GeneralBase_s *>(record);
    return number >= 1 && number <= NumColorMapGroups ? &base->ColorMapGroups[number - 1] : nullptr;
}

// ---- $!LIMITS, $!COMPATIBILITY, $!GLOBALLINKING (record GeneralBase_s) ----

// All but the two load-on-demand fractions only in the configuration file.
const StyleField_s LimitsFields[] = {
    ConfigOnly(Int(MacroSetValue_MAXPTSINALINE, AboveZeroLgIndexInputSpec, AT(GeneralBase_s, MaxPtsInALine))),
    ConfigOnly(Int(MacroSetValue_MAXCHRSINTEXTLABELS, TextLabelLengthInputSpec, AT(GeneralBase_s, MaxChrsInTextLabels))),
    ConfigOnly(Int(MacroSetValue_MAXNUMCONTOURLEVELS, AboveZeroLgIndexInputSpec, AT(GeneralBase_s, MaxNumContourLevels))),
    ConfigOnly(Int(MacroSetValue_MAXFENROWZONES, EntIndexLimitInputSpec, AT(GeneralBase_s, MaxFenrowZones))),
    ConfigOnly(Int(MacroSetValue_MAXFENROWVARS, EntIndexLimitInputSpec, AT(GeneralBase_s, MaxFenrowVars))),
    ConfigOnly(Int(MacroSetValue_MAXNUMPICKOBJECTS, AboveZeroLgIndexInputSpec, AT(GeneralBase_s, MaxNumPickObjects))),
    ConfigOnly(Int(MacroSetValue_MAXTHREADS, ZeroAndAboveLgIndexInputSpec, AT(GeneralBase_s, MaxThreads))),
    ConfigOnly(Int(MacroSetValue_MAXAVAILABLEPROCESSORS, ProcessorsInputSpec, AT(GeneralBase_s, MaxAvailableProcessors))),
    ConfigOnly(WithHooks(Long(MacroSetValue_MAXUSABLEMEMORY, ZeroAndAboveLgIndexInputSpec, AT(GeneralBase_s, MaxUsableMemoryMB)),
                         nullptr, revalidateLoadThresholds)),
    ConfigOnly(Int(MacroSetValue_IPCTIMEOUTSECONDS, ZeroAndAboveLgIndexInputSpec, AT(GeneralBase_s, IPCTimeoutSeconds))),
    WithHooks(Double(MacroSetValue_LODTHRESHOLDMINFRACT, ZeroToOneInputSpec, AT(GeneralBase_s, LODThresholdMinFract)),
              lodMinFractSpec, revalidateLoadThresholds),
    WithHooks(Double(MacroSetValue_LODTHRESHOLDMAXFRACT, ZeroToOneInputSpec, AT(GeneralBase_s, LODThresholdMaxFract)),
              lodMaxFractSpec, revalidateLoadThresholds),
};
const StyleRecord_s LimitsRecord = recordOf(LimitsFields);

const StyleField_s CompatibilityFields[] = {
    Bool(MacroSetValue_ALLOWDATASHARING, AT(GeneralBase_s, AllowDataSharing)),
    Bool(MacroSetValue_ALLOWOLDTEXTFORMATTING, AT(GeneralBase_s, AllowOldTextFormatting)),
};
const StyleRecord_s CompatibilityRecord = recordOf(CompatibilityFields);

const StyleField_s GlobalLinkingFields[] = {
    InColorTables(Bool(MacroSetValue_LINKCOLORMAPS, AT(GeneralBase_s, LinkColorMaps))),
};
const StyleRecord_s GlobalLinkingRecord = recordOf(GlobalLinkingFields);

// ---- the root ----

const StyleField_s GeneralStyleFields[] = {
    MakeStyleBlock(MacroSetValue_PAPER, PaperRecord, AT(GeneralBase_s, Paper)),
    MakeStyleBlock(MacroSetValue_PRINTSETUP, PrintSetupRecord, SAME),
    MakeStyleBlock(MacroSetValue_EXPORTSETUP, ExportSetupRecord, SAME),
    MakeStyleBlock(MacroSetValue_FILECONFIG, FileConfigRecord, SAME),
    MakeStyleBlock(MacroSetValue_BASICCOLOR, BasicColorRecord, SAME),
    MakeStyleBlock(MacroSetValue_INTERFACE, InterfaceRecord, SAME),
    MakeStyleBlock(MacroSetValue_BASICSIZE, BasicSizeRecord, AT(GeneralBase_s, BasicSize)),
    MakeStyleBlock(MacroSetValue_DEFAULTGEOM, DefaultGeomRecord, AT(GeneralBase_s, DefaultGeom)),
    MakeStyleBlock(MacroSetValue_DEFAULTTEXT, DefaultTextRecord, AT(GeneralBase_s, DefaultText)),
    MakeStyleBlock(MacroSetValue_FONTADJUST, FontAdjustRecord, AT(GeneralBase_s, FontAdjust)),
    MakeStyleBlock(MacroSetValue_FRAMESETUP, FrameSetupRecord, AT(GeneralBase_s, FrameSetup)),
    MakeStyleNumberedBlock(MacroSetValue_GLOBALCOLORMAP, ColorMapRecord, colorMapGroupAt,
             "Invalid group number specified in $!GLOBALCOLORMAP command."),
    MakeStyleBlock(MacroSetValue_LIMITS, LimitsRecord, SAME),
    MakeStyleBlock(MacroSetValue_COMPATIBILITY, CompatibilityRecord, SAME),
    MakeStyleBlock(MacroSetValue_DATASETUP, DataSetupRecord, AT(GeneralBase_s, DataSetup)),
    MakeStyleBlock(MacroSetValue_GLOBALFRAME, GlobalFrameRecord, AT(GeneralBase_s, GlobalFrame)),
    MakeStyleBlock(MacroSetValue_GLOBALLINKING, GlobalLinkingRecord, SAME),
};

#undef AT
#undef SAME

}  // namespace

const StyleRecord_s GeneralStyle = recordOf(GeneralStyleFields);

SetValueReturnCode_e GeneralState_s_SetValue(const int path[7], ArbParam_t argValue, double doubleValue,
                                             AssignOp_e assignOp) {
    return SetStyleRecordValue(GeneralStyle, &GeneralBase, path, 0, argValue, doubleValue, assignOp);
}

SetValueReturnCode_e GeneralState_s_GetValue(const int path[7], double *doubleOut, ArbParam_t *argOut) {
    return GetStyleRecordValue(GeneralStyle, &GeneralBase, path, 0, doubleOut, argOut);
}

const StyleRecord_s &GetTextStyleRecord() { return DefaultTextRecord; }
const StyleRecord_s &GetGeomStyleRecord() { return DefaultGeomRecord; }
