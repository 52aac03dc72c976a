// Contour plots through the launcher: a banded flood of F = X + 2Y exported as PNG and read back
// with Pillow, each sampled point in the colour of its band (the band from the point's F, its
// colour from the colour rules in this process); contour lines extracted into zones and written
// as a text data file, whose vertices lie on their levels, cross exactly the edges a brute-force
// scan finds, follow the nudge rule for a level on node values, and come out per level or per
// polyline; the same for an FE zone.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "base/field/contlevel.h"
#include "base/plot/frame.h"
#include "base/plot/grcolor.h"
#include "e2e/harness.h"

namespace {

// F = X + 2Y on ni x nj points over [0, 10] x [0, 5], double values, POINT packing.
std::string gridFile(int ni, int nj) {
    std::ostringstream out;
    out.precision(17);
    out << "VARIABLES = X Y F\nZONE T=\"grid\" I=" << ni << " J=" << nj
        << " DATAPACKING=POINT DT=(DOUBLE DOUBLE DOUBLE)\n";
    for (int j = 0; j < nj; j++)
        for (int i = 0; i < ni; i++) {
            double x = 10.0 * i / (ni - 1), y = 5.0 * j / (nj - 1);
            out << x << " " << y << " " << x + 2 * y << "\n";
        }
    return out.str();
}

// The same points as FE quadrilaterals.
std::string feFile(int ni, int nj) {
    std::ostringstream out;
    out.precision(17);
    out << "VARIABLES = X Y F\nZONE T=\"fe\" N=" << ni * nj << " E=" << (ni - 1) * (nj - 1)
        << " ZONETYPE=FEQUADRILATERAL DATAPACKING=POINT DT=(DOUBLE DOUBLE DOUBLE)\n";
    for (int j = 0; j < nj; j++)
        for (int i = 0; i < ni; i++) {
            double x = 10.0 * i / (ni - 1), y = 5.0 * j / (nj - 1);
            out << x << " " << y << " " << x + 2 * y << "\n";
        }
    for (int j = 0; j + 1 < nj; j++)
        for (int i = 0; i + 1 < ni; i++) {
            int c = 1 + i + j * ni;
            out << c << " " << c + 1 << " " << c + 1 + ni << " " << c + ni << "\n";
        }
    return out.str();
}

std::string levelsCommand(const std::vector<double> &levels) {
    std::ostringstream out;
    out.precision(17);
    out << "$!CONTOURLEVELS NEW CONTOURGROUP = 1 RAWDATA\n" << levels.size() << "\n";
    for (double level : levels) out << level << "\n";
    return out.str();
}

std::string runMacro(Scratch &s, const std::string &data, const std::string &body) {
    s.write("f.dat", data);
    s.write("run.mcr", "#!MC 1100\n" + body);
    RunResult r = s.run({"-b", "run.mcr", "f.dat"});
    EXPECT_EQ(r.exitCode, 0) << r.err;
    return s.read("batch.log");
}

// A zone of a text data file as written: its title, points (X, Y, F) and segments (0-based).
struct WrittenZone {
    std::string Title;
    bool IsFE = false;
    std::vector<double> X, Y, F;
    std::vector<std::pair<int, int>> Segments;
};

std::vector<WrittenZone> readZones(const std::string &text) {
    std::vector<WrittenZone> zones;
    std::istringstream in(text);
    std::string line;
    while (std::getline(in, line)) {
        if (line.rfind("ZONE T=\"", 0) != 0) continue;
        WrittenZone zone;
        zone.Title = line.substr(8, line.rfind('"') - 8);
        int n = 0, e = 0, i = 0;
        while (std::getline(in, line) && line.find("DT=") == std::string::npos) {
            if (sscanf(line.c_str(), " N=%d, E=%d", &n, &e) == 2) zone.IsFE = true;
            if (sscanf(line.c_str(), " I=%d", &i) == 1) n = i;
        }
        std::vector<double> *columns[3] = {&zone.X, &zone.Y, &zone.F};
        for (std::vector<double> *column : columns)
            for (int k = 0; k < n; k++) {
                double v;
                in >> v;
                column->push_back(v);
            }
        for (int k = 0; k < e; k++) {
            int a, b;
            in >> a >> b;
            zone.Segments.emplace_back(a - 1, b - 1);
        }
        zones.push_back(zone);
    }
    return zones;
}

// The edges of the ni x nj grid that level v crosses (a node on the level counts as above).
std::set<std::pair<int, int>> crossedEdges(int ni, int nj, double v) {
    auto f = [&](int n) { return 10.0 * (n % ni) / (ni - 1) + 2 * (5.0 * (n / ni) / (nj - 1)); };
    auto crossed = [&](double a, double b) { return (a - v >= 0 && b - v < 0) || (b - v >= 0 && a - v < 0); };
    std::set<std::pair<int, int>> edges;
    for (int n = 0; n < ni * nj; n++) {
        if (n % ni + 1 < ni && crossed(f(n), f(n + 1))) edges.insert({n, n + 1});
        if (n / ni + 1 < nj && crossed(f(n), f(n + ni))) edges.insert({n, n + ni});
    }
    return edges;
}

// The colour the band has under the factory colour rules, worked out in this process on a frame
// with the same group.
std::vector<int> bandColour(const std::vector<double> &levels, int band) {
    if (CurrentColorMap[0].empty()) {
        EXPECT_TRUE(Gr_AllocColorTables());
    }
    // The tables as the factory colour maps make them, whatever ran before.
    for (int group = NumColorMapGroups - 1; group >= 0; group--) Gr_InstallColorMap(group);
    EXPECT_TRUE(CreateNewFrame());
    CurFrame->Style.GlobalContour[0].Levels = levels;
    CurFrame->Style.GlobalContour[0].ColorMapFilter.ColorMapDistribution = 1;
    int index = GetMultiColorFromContourLevel(0, band, false);
    DeleteAllFrames();
    RGB_s c = CurrentColorMap[SelectFinalColorMapGroup(0)][size_t(index)];
    return {c.R, c.G, c.B};
}

bool contourLevelsAvailable(const std::string &log) { return log.find("is not available yet") == std::string::npos; }

TEST(ContourPlotE2E, FloodedExportShowsEachPointInItsBandsColour) {
    Scratch s;
    const std::vector<double> levels = {2.6, 7.3, 11.9, 16.2};
    std::string log = runMacro(s, gridFile(41, 21),
                               "$!GLOBALCONTOUR 1 VAR = 3\n" + levelsCommand(levels) +
                                   "$!GLOBALCONTOUR 1 COLORMAPFILTER { COLORMAPDISTRIBUTION = BANDED }\n"
                                   "$!FIELDLAYERS SHOWCONTOUR = YES SHOWMESH = NO\n"
                                   "$!FIELDMAP [1] CONTOUR { CONTOURTYPE = FLOOD }\n"
                                   "$!EXPORTSETUP EXPORTFORMAT = PNG IMAGEWIDTH = 600 EXPORTFNAME = \"f.png\"\n"
                                   "$!EXPORT\n");
    ASSERT_TRUE(contourLevelsAvailable(log)) << log;
    EXPECT_EQ(log.find("Err"), std::string::npos) << log;
    // Points well inside bands: F at least 0.8 from every level (some 30 pixels here). The fit
    // puts X 0..10.001 and Y 0..5.0005 on 0.13..0.88 of the frame across and 0.11..0.88 up.
    struct Sample {
        double X, Y;
        int Band;
    };
    std::vector<Sample> samples;
    for (double y = 0.25; y < 5; y += 0.5)
        for (double x = 0.25; x < 10; x += 0.5) {
            double f = x + 2 * y;
            bool clear = true;
            int band = 0;
            for (double level : levels) {
                clear = clear && std::fabs(f - level) >= 0.8;
                band += level < f;
            }
            if (clear) samples.push_back({x, y, band});
        }
    ASSERT_GT(samples.size(), 100u);
    std::string program = "from PIL import Image\nim = Image.open('f.png').convert('RGB')\nW, H = im.size\n";
    for (const Sample &p : samples) {
        char line[200];
        snprintf(line, sizeof line,
                 "print(*im.getpixel((round((0.13 + 0.75 * %.17g / 10.001) * (W - 1)), "
                 "round((1 - (0.11 + 0.77 * %.17g / 5.0005)) * (H - 1)))))\n",
                 p.X, p.Y);
        program += line;
    }
    std::vector<std::string> lines = Lines(RunPython(s, program));
    ASSERT_EQ(lines.size(), samples.size()) << RunPython(s, program);
    std::map<int, std::vector<int>> colours;
    for (int band = 0; band <= int(levels.size()); band++) colours[band] = bandColour(levels, band);
    for (size_t n = 0; n < samples.size(); n++) {
        std::vector<int> rgb(3);
        ASSERT_EQ(sscanf(lines[n].c_str(), "%d %d %d", &rgb[0], &rgb[1], &rgb[2]), 3) << lines[n];
        EXPECT_EQ(rgb, colours[samples[n].Band]) << "at " << samples[n].X << "," << samples[n].Y;
    }
    // The bands differ in colour.
    std::set<std::vector<int>> distinct;
    for (auto &entry : colours) distinct.insert(entry.second);
    EXPECT_EQ(distinct.size(), colours.size());
}

TEST(ContourPlotE2E, ExtractedLinesLieOnTheirLevelsAndCrossTheEdgesOnce) {
    Scratch s;
    const int ni = 21, nj = 11;                                 // steps of 0.5: F takes multiples of 0.5 at the nodes
    const std::vector<double> levels = {3.3, 7.7, 12.1, 30.0};  // the last one crosses nothing
    std::string log = runMacro(s, gridFile(ni, nj),
                               "$!GLOBALCONTOUR 1 VAR = 3\n" + levelsCommand(levels) +
                                   "$!FIELDLAYERS SHOWCONTOUR = YES\n"
                                   "$!FIELDMAP [1] CONTOUR { CONTOURTYPE = LINES }\n"
                                   "$!CREATECONTOURLINEZONES\n"
                                   "$!WRITEDATASET \"out.dat\" BINARY = NO\n");
    ASSERT_TRUE(contourLevelsAvailable(log)) << log;
    EXPECT_EQ(log.find("Err"), std::string::npos) << log;
    std::vector<WrittenZone> zones = readZones(s.read("out.dat"));
    ASSERT_EQ(zones.size(), 4u);  // the grid and three levels
    for (size_t l = 0; l < 3; l++) {
        const WrittenZone &zone = zones[l + 1];
        const double v = levels[l];
        char title[64];
        snprintf(title, sizeof title, "Contour line: C=%G", v);
        EXPECT_EQ(zone.Title, title);
        ASSERT_TRUE(zone.IsFE);
        // One point per crossed edge, one segment per cell the line passes through.
        std::set<std::pair<int, int>> edges = crossedEdges(ni, nj, v);
        EXPECT_EQ(zone.X.size(), edges.size()) << v;
        EXPECT_EQ(zone.Segments.size(), edges.size() - 1) << v;  // one open line
        for (size_t n = 0; n < zone.X.size(); n++) {
            EXPECT_NEAR(zone.X[n] + 2 * zone.Y[n], v, 1e-9) << v;
            EXPECT_NEAR(zone.F[n], v, 1e-9) << v;
            // On a grid edge: X or Y on a multiple of the step.
            bool onEdge = std::fabs(zone.X[n] * 2 - std::round(zone.X[n] * 2)) < 1e-9 ||
                          std::fabs(zone.Y[n] * 2 - std::round(zone.Y[n] * 2)) < 1e-9;
            EXPECT_TRUE(onEdge) << zone.X[n] << "," << zone.Y[n];
        }
        for (const auto &segment : zone.Segments) {
            ASSERT_LT(size_t(segment.second), zone.X.size());
            // Neighbouring points of a line lie in one cell: at most one step apart each way.
            EXPECT_LE(std::fabs(zone.X[size_t(segment.first)] - zone.X[size_t(segment.second)]), 0.5 + 1e-9);
            EXPECT_LE(std::fabs(zone.Y[size_t(segment.first)] - zone.Y[size_t(segment.second)]), 0.5 + 1e-9);
        }
    }
}

TEST(ContourPlotE2E, ALevelOnNodeValuesIsNudgedOffTheNodes) {
    Scratch s;
    const int ni = 21, nj = 11;
    std::string log = runMacro(s, gridFile(ni, nj),
                               "$!GLOBALCONTOUR 1 VAR = 3\n" + levelsCommand({5.0}) +
                                   "$!FIELDLAYERS SHOWCONTOUR = YES\n"
                                   "$!FIELDMAP [1] CONTOUR { CONTOURTYPE = LINES }\n"
                                   "$!CREATECONTOURLINEZONES\n"
                                   "$!WRITEDATASET \"out.dat\" BINARY = NO\n");
    ASSERT_TRUE(contourLevelsAvailable(log)) << log;
    std::vector<WrittenZone> zones = readZones(s.read("out.dat"));
    ASSERT_EQ(zones.size(), 2u);
    const WrittenZone &zone = zones[1];
    // Nodes with F = 5 count as above the level, so the line runs just below them: on an edge
    // from such a node down to a node of F = 5 - d, the node's value moves up by d / 10000 and
    // the point lies at t = 0.0001 / 1.0001 of the edge, where F = 5 - d t. Edges whose ends
    // straddle 5 cut it exactly.
    const double t = 0.0001 / 1.0001;
    EXPECT_EQ(zone.X.size(), crossedEdges(ni, nj, 5.0).size());
    int nudged = 0;
    for (size_t n = 0; n < zone.X.size(); n++) {
        const double f = zone.X[n] + 2 * zone.Y[n];
        const bool exact = std::fabs(f - 5.0) < 1e-9;
        const bool alongX = std::fabs(f - (5.0 - 0.5 * t)) < 1e-9, alongY = std::fabs(f - (5.0 - 1.0 * t)) < 1e-9;
        EXPECT_TRUE(exact || alongX || alongY) << zone.X[n] << "," << zone.Y[n] << " F " << f;
        nudged += alongX || alongY;
        // Never on a node: one of X, Y lies strictly between grid lines.
        bool onNode = std::fabs(zone.X[n] * 2 - std::round(zone.X[n] * 2)) < 1e-9 &&
                      std::fabs(zone.Y[n] * 2 - std::round(zone.Y[n] * 2)) < 1e-9;
        EXPECT_FALSE(onNode) << zone.X[n] << "," << zone.Y[n];
    }
    EXPECT_GT(nudged, 5);
}

TEST(ContourPlotE2E, FEZoneLinesPerLevelAndPerPolyline) {
    Scratch s;
    const int ni = 11, nj = 6;  // steps of 1
    const std::vector<double> levels = {4.5, 9.25};
    const std::string setup = "$!GLOBALCONTOUR 1 VAR = 3\n" + levelsCommand(levels) +
                              "$!FIELDLAYERS SHOWCONTOUR = YES\n"
                              "$!FIELDMAP [1] CONTOUR { CONTOURTYPE = BOTHLINESANDFLOOD }\n";
    std::string log = runMacro(s, feFile(ni, nj),
                               setup +
                                   "$!CREATECONTOURLINEZONES CONTLINECREATEMODE = ONEZONEPERINDEPENDENTPOLYLINE\n"
                                   "$!WRITEDATASET \"poly.dat\" BINARY = NO\n");
    ASSERT_TRUE(contourLevelsAvailable(log)) << log;
    EXPECT_EQ(log.find("Err"), std::string::npos) << log;
    std::vector<WrittenZone> zones = readZones(s.read("poly.dat"));
    // A straight line through the rectangle is one polyline: one I-ordered zone per level, its
    // points in order along the line.
    ASSERT_EQ(zones.size(), 3u);
    for (size_t l = 0; l < 2; l++) {
        const WrittenZone &zone = zones[l + 1];
        EXPECT_FALSE(zone.IsFE);
        char title[64];
        snprintf(title, sizeof title, "Contour line: C=%G", levels[l]);
        EXPECT_EQ(zone.Title, title);
        EXPECT_EQ(zone.X.size(), crossedEdges(ni, nj, levels[l]).size());
        for (size_t n = 0; n < zone.X.size(); n++) {
            EXPECT_NEAR(zone.X[n] + 2 * zone.Y[n], levels[l], 1e-9);
            if (n > 0) {
                EXPECT_LE(std::fabs(zone.X[n] - zone.X[n - 1]), 1 + 1e-9);
                EXPECT_LE(std::fabs(zone.Y[n] - zone.Y[n - 1]), 1 + 1e-9);
            }
        }
        // Monotone along the line: X falls (or rises) throughout.
        double direction = zone.X.back() - zone.X.front();
        for (size_t n = 1; n < zone.X.size(); n++) EXPECT_GE((zone.X[n] - zone.X[n - 1]) * direction, -1e-12);
    }

    Scratch perLevel;
    log = runMacro(perLevel, feFile(ni, nj),
                   setup + "$!CREATECONTOURLINEZONES\n$!WRITEDATASET \"lev.dat\" BINARY = NO\n");
    zones = readZones(perLevel.read("lev.dat"));
    ASSERT_EQ(zones.size(), 3u);
    for (size_t l = 0; l < 2; l++) {
        EXPECT_TRUE(zones[l + 1].IsFE);
        EXPECT_EQ(zones[l + 1].Segments.size(), zones[l + 1].X.size() - 1);
    }
}

TEST(ContourPlotE2E, NothingToExtractSaysSo) {
    Scratch s;
    std::string log = runMacro(s, gridFile(5, 3),
                               "$!GLOBALCONTOUR 1 VAR = 3\n" + levelsCommand({100.0}) +
                                   "$!FIELDLAYERS SHOWCONTOUR = YES\n"
                                   "$!FIELDMAP [1] CONTOUR { CONTOURTYPE = LINES }\n"
                                   "$!CREATECONTOURLINEZONES\n");
    ASSERT_TRUE(contourLevelsAvailable(log)) << log;
    EXPECT_TRUE(HoldsMessage(log, "No contour lines were extracted.")) << log;
}

}  // namespace

namespace {

TEST(ContourPlotE2E, LegendShowsOneBoxPerBandAtItsAnchor) {
    Scratch s;
    const std::vector<double> levels = {5.0, 10.0, 15.0};
    std::string log = runMacro(s, gridFile(11, 6),
                               "$!GLOBALCONTOUR 1 VAR = 3\n" + levelsCommand(levels) +
                                   "$!GLOBALCONTOUR 1 LEGEND { SHOW = YES }\n"
                                   "$!FIELDLAYERS SHOWCONTOUR = YES SHOWMESH = NO\n"
                                   "$!FIELDMAP [1] CONTOUR { CONTOURTYPE = FLOOD }\n"
                                   "$!EXPORTSETUP EXPORTFORMAT = PNG IMAGEWIDTH = 500 EXPORTFNAME = \"l.png\"\n"
                                   "$!EXPORT\n");
    EXPECT_EQ(log.find("Err"), std::string::npos) << log;
    // The frame is 500 by (499 x 8 / 9 + 1, rounded) 445 pixels. The legend's top right corner
    // stands at XYPOS (95%, 80%) of the frame, Y up: x = 0.95 x 499, y = 0.2 x 444. Each band is
    // a row of the number text's height (2.5% of the frame) times the row spacing 1.2, twice as
    // wide; the highest band is on top.
    double right = 0.95 * 499, top = 0.2 * 444, row = 0.025 * 1.2 * 444;
    char program[512];
    snprintf(program, sizeof(program),
             "from PIL import Image\n"
             "im = Image.open('l.png').convert('RGB')\n"
             "print([list(im.getpixel((%d, int(%f + (b + 0.5) * %f)))) for b in range(4)])\n",
             int(right - row), top, row);
    std::string expected = "[";
    for (int band = 3; band >= 0; band--) {
        std::vector<int> c = bandColour(levels, band);
        expected += "[" + std::to_string(c[0]) + ", " + std::to_string(c[1]) + ", " + std::to_string(c[2]) + "]" +
                    (band > 0 ? ", " : "]\n");
    }
    EXPECT_EQ(RunPython(s, program), expected);
}

}  // namespace
