// The factory values of GeneralBase, the tables that are too long for the record's own
// initialisers (basic colours, colour maps), and the few changes a current installation makes.
#include "base/kernel/genbase.h"

#include <cmath>
#include <initializer_list>

#include "base/kernel/paths.h"

GeneralBase_s GeneralFactoryDefaults;
GeneralBase_s GeneralBase;

int PaperSizeInfoSlot(int paperSize) {
    switch (paperSize) {
        case PaperSize_Letter: return 0;
        case PaperSize_Double: return 1;
        case PaperSize_A3: return 2;
        case PaperSize_A4: return 3;
        case PaperSize_Custom1: return 4;
        case PaperSize_Custom2: return 5;
        default: return -1;
    }
}

namespace {

int16_t channel(double fraction) { return static_cast<int16_t>(std::lround(fraction * 255.0)); }

// A colour from hue (degrees), saturation and value, each channel rounded to 0..255.
RGB_s fromHSV(double hue, double saturation, double value) {
    double h = std::fmod(hue, 360.0) / 60.0;
    int sector = static_cast<int>(h);
    double f = h - sector;
    double p = value * (1.0 - saturation), q = value * (1.0 - saturation * f),
           t = value * (1.0 - saturation * (1.0 - f));
    double r = value, g = t, b = p;
    switch (sector) {
        case 0: r = value, g = t, b = p; break;
        case 1: r = q, g = value, b = p; break;
        case 2: r = p, g = value, b = t; break;
        case 3: r = p, g = q, b = value; break;
        case 4: r = t, g = p, b = value; break;
        default: r = value, g = p, b = q; break;
    }
    return RGB_s{channel(r), channel(g), channel(b)};
}

// Points evenly spaced from 0 to exactly 1, lead and trail the same.
ColorMapBand_s evenBand(std::initializer_list<RGB_s> colors) {
    ColorMapBand_s band{};
    band.NumControlPoints = static_cast<int>(colors.size());
    int n = 0;
    for (const RGB_s &color : colors) {
        double location = n == band.NumControlPoints - 1 ? 1.0 : double(n) / double(band.NumControlPoints - 1);
        band.ControlPoint[n++] = ColorMapControlPoint_s{location, color, color};
    }
    return band;
}

}  // namespace

std::array<RGB_s, NumBasicColors> FactoryBasicColors() {
    std::array<RGB_s, NumBasicColors> colors{};
    const RGB_s named[8] = {{0, 0, 0},     {255, 0, 0},   {0, 255, 0},   {0, 0, 255},
                            {0, 255, 255}, {255, 255, 0}, {255, 0, 255}, {255, 255, 255}};
    for (int n = 0; n < 8; n++) colors[n] = named[n];
    // Seven rows, dark to light: the first two darken the full colour, the rest pale it.
    const double saturation[7] = {1.0, 1.0, 1.0, 0.75, 0.5, 0.3, 0.15};
    const double value[7] = {0.5, 0.75, 1.0, 1.0, 1.0, 1.0, 1.0};
    for (int custom = 0; custom < 56; custom++)
        colors[8 + custom] = fromHSV(45.0 * (custom % 8), saturation[custom / 8], value[custom / 8]);
    colors[64] = RGB_s{128, 128, 128};
    colors[65] = RGB_s{64, 64, 64};
    return colors;
}

std::array<ColorMap_s, NumColorMapGroups> FactoryColorMapGroups() {
    ColorMap_s map{};
    map.TwoColor = evenBand({{255, 0, 0}, {128, 0, 128}, {0, 0, 255}});
    map.SmRainbow = evenBand({{0, 0, 255}, {0, 255, 255}, {0, 255, 0}, {255, 255, 0}, {255, 0, 0}});
    map.LgRainbow = evenBand({{0, 0, 255}, {0, 255, 255}, {0, 255, 0}, {255, 255, 0}, {255, 0, 0}, {255, 0, 255},
                              {255, 255, 255}});
    map.GrayScale = evenBand({{0, 0, 0}, {32, 32, 32}, {64, 64, 64}, {96, 96, 96}, {128, 128, 128},
                              {160, 160, 160}, {192, 192, 192}, {224, 224, 224}, {255, 255, 255}});
    map.UserDefined = map.SmRainbow;
    // The modern map breaks sharply at its inner points: trail, then lead.
    const RGB_s modern[8][2] = {{{100, 35, 100}, {100, 35, 100}}, {{255, 0, 255}, {35, 35, 100}},
                                {{0, 0, 255}, {35, 100, 100}},    {{0, 255, 255}, {35, 100, 35}},
                                {{0, 255, 0}, {100, 100, 35}},    {{255, 255, 0}, {85, 46, 10}},
                                {{217, 117, 26}, {100, 35, 35}},  {{255, 0, 0}, {255, 0, 0}}};
    map.Modern = evenBand({modern[0][0], modern[1][0], modern[2][0], modern[3][0], modern[4][0], modern[5][0],
                           modern[6][0], modern[7][0]});
    for (int n = 0; n < 8; n++) map.Modern.ControlPoint[n].LeadRGB = modern[n][1];

    std::array<ColorMap_s, NumColorMapGroups> groups;
    for (int group = 0; group < NumColorMapGroups; group++) {
        groups[group] = map;
        groups[group].ContourColorMap = group;  // SMRAINBOW, LGRAINBOW, MODERN, GRAYSCALE
    }
    return groups;
}

void FillGeneralFactoryDefaults() { GeneralFactoryDefaults = GeneralBase_s(); }

void InitializeGeneralFileNameDefaults(const std::string &startupDirectory) {
    for (GeneralBase_s *base : {&GeneralFactoryDefaults, &GeneralBase}) {
        base->PrintFName = MakeAbsolutePath("print.out", startupDirectory);
        base->ExportFName = MakeAbsolutePath("export.out", startupDirectory);
        base->DataFileFilter = "*.[dp][al]t";
        base->AsciiDataFileFilter = "*.dat";
        base->BinaryDataFileFilter = "*.plt";
        base->LayoutFileFilter = "*.l[ap][yk]";
        base->InputLayoutFileFilter = "*.lay";
        base->OutputLayoutFileFilter = "*.lay";
        base->LayoutPackageFileFilter = "*.lpk";
        base->StyleFileFilter = "*.sty";
        base->MacroFileFilter = "*.mcr";
        base->EquationFileFilter = "*.eqn";
        base->ImageFileFilter = "*.[bpj][mnp][pg]";
        base->ColorMapFileFilter = "*.map";
    }
}

void ModernizeGeneralBaseDefaults() {
    // Curves of many points are common now; the factory limit stays 5000 for old stylesheets.
    GeneralBase.MaxPtsInALine = 20000;
    // A header bar tall enough for today's screen fonts.
    GeneralBase.GlobalFrame.FrameHeaderHeight = 0.2;
}
