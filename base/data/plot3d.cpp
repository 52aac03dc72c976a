// The PLOT3D reader. The grid file and, as asked, the solution and function files are read whole
// into memory; their headers (grid count and dimensions) are checked against each other first,
// then grid by grid the values are gathered into zones. The output is built in memory (header
// records, then the data section) and written only once everything has been read, so a failed
// conversion leaves no output behind.
// Relies on: the C library only. Values are single precision throughout, as the layouts read here
// store them; integers (dimensions, IBlank) are 4 bytes.
#include "base/data/plot3d.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

#include "base/data/fenrow.h"

namespace {

constexpr float ZoneMarker = 299.0f, EndOfHeaderMarker = 357.0f;
constexpr int32_t FloatType = 1;  // the file code of single precision values
constexpr int64_t MaxPoints = 2147483646;

// ---- one input file, read through as text, plain binary or Fortran records ------------------

struct Input {
    std::string name;
    std::vector<unsigned char> bytes;
    size_t pos = 0;
    bool text = false, fortran = false, swap = false;
    size_t recordStart = 0, recordEnd = 0;
    uint32_t recordLength = 0;
    bool inRecord = false;
    std::string *err = nullptr;

    bool fail(const std::string &message) {
        if (err->empty()) *err = message;
        return false;
    }
    bool truncated() { return fail("Unexpected end of PLOT3D file " + name); }

    bool load(const std::string &fileName) {
        name = fileName;
        FILE *file = fopen(fileName.c_str(), "rb");
        if (file == nullptr) return fail("Cannot find input file " + fileName + "\n");
        unsigned char block[65536];
        size_t got;
        while ((got = fread(block, 1, sizeof(block), file)) > 0) bytes.insert(bytes.end(), block, block + got);
        bool readError = ferror(file) != 0;
        fclose(file);
        if (readError) return fail("Cannot read input file " + fileName);
        return true;
    }

    uint32_t raw32() {
        unsigned char b[4];
        memcpy(b, bytes.data() + pos, 4);
        if (swap) std::reverse(b, b + 4);
        pos += 4;
        uint32_t v;
        memcpy(&v, b, 4);
        return v;
    }
    // Four bytes of values; inside a Fortran record they may not run past its end.
    bool need4() {
        if (inRecord && pos + 4 > recordEnd) return fail("Error in PLOT3D dimensions.");
        if (pos + 4 > bytes.size()) return truncated();
        return true;
    }

    bool beginRecord() {
        if (!fortran) return true;
        if (pos + 4 > bytes.size()) return truncated();
        recordLength = raw32();
        recordStart = pos;
        recordEnd = pos + recordLength;
        if (recordEnd + 4 > bytes.size()) return truncated();
        inRecord = true;
        return true;
    }
    // A record may hold more than is read from it (padding); the closing marker must repeat the
    // opening one.
    bool endRecord() {
        if (!fortran) return true;
        inRecord = false;
        pos = recordEnd;
        if (raw32() != recordLength) return fail("Bad Fortran record marker in PLOT3D file " + name);
        return true;
    }

    // The next white-space separated number of a text file; Fortran's D exponents read as E.
    bool textNumber(double *value) {
        while (pos < bytes.size() && (isspace(bytes[pos]) || bytes[pos] == ',')) pos++;
        if (pos >= bytes.size()) return truncated();
        std::string word;
        while (pos < bytes.size() && !isspace(bytes[pos]) && bytes[pos] != ',') {
            char c = char(bytes[pos++]);
            word += (c == 'd' || c == 'D') ? 'E' : c;
        }
        char *end = nullptr;
        *value = strtod(word.c_str(), &end);
        if (end == word.c_str() || *end != '\0') return fail("Bad value '" + word + "' in PLOT3D file " + name);
        return true;
    }

    bool int32(int64_t *value) {
        if (text) {
            double v;
            if (!textNumber(&v)) return false;
            *value = int64_t(std::llround(v));
            return true;
        }
        if (!need4()) return false;
        *value = int32_t(raw32());
        return true;
    }
    bool float32(float *value) {
        if (text) {
            double v;
            if (!textNumber(&v)) return false;
            *value = float(v);
            return true;
        }
        if (!need4()) return false;
        uint32_t bits = raw32();
        memcpy(value, &bits, 4);
        return true;
    }
    // A run of count values must fit what is left (a text value takes at least a byte) before
    // room is made for it, so a bad dimension cannot ask for more memory than the file could fill.
    bool floats(std::vector<float> *values, int64_t count) {
        uint64_t need = uint64_t(count) * (text ? 1 : 4);
        if (inRecord && need > recordEnd - pos) return fail("Error in PLOT3D dimensions.");
        if (need > bytes.size() - pos) return truncated();
        values->resize(size_t(count));
        for (float &v : *values)
            if (!float32(&v)) return false;
        return true;
    }
};

// Grid count and per grid the dimensions (missing ones are 1) and, for function files, the
// number of variables.
struct Header {
    std::vector<std::array<int64_t, 3>> dims;
    std::vector<int64_t> numVars;
};

bool readHeader(Input &in, bool multiGrid, int numDims, bool withVars, Header *header) {
    int64_t numGrids = 1;
    if (multiGrid) {
        if (!in.beginRecord() || !in.int32(&numGrids) || !in.endRecord()) return false;
        if (numGrids <= 0 || numGrids > 100000) return in.fail("Error in PLOT3D dimensions.");
    }
    if (!in.beginRecord()) return false;
    for (int64_t g = 0; g < numGrids; g++) {
        std::array<int64_t, 3> d = {1, 1, 1};
        for (int n = 0; n < numDims; n++)
            if (!in.int32(&d[size_t(n)])) return false;
        header->dims.push_back(d);
        int64_t vars = 0;
        if (withVars && !in.int32(&vars)) return false;
        header->numVars.push_back(vars);
    }
    return in.endRecord();
}

// ---- the output -----------------------------------------------------------------------------

struct Out {
    std::vector<char> buf;
    bool swap = false;
    template <typename T>
    void raw(T value) {
        unsigned char b[sizeof(T)];
        memcpy(b, &value, sizeof(T));
        if (swap) std::reverse(b, b + sizeof(T));
        buf.insert(buf.end(), b, b + sizeof(T));
    }
    void i32(int32_t v) { raw(v); }
    void f32(float v) { raw(v); }
    void f64(double v) { raw(v); }
    void text(const std::string &s) {
        for (unsigned char c : s) i32(int32_t(c));
        i32(0);
    }
};

// The values of one grid, variable by variable, each indexed I fastest, then J, then K.
using GridValues = std::vector<std::vector<float>>;

struct Writer {
    Out header, data;
    int numVars = 0;
    bool collapse = false;

    // A block packed ordered zone of the points at the given linear indices.
    void zone(const std::string &name, std::array<int64_t, 3> dims, const std::vector<int64_t> &points,
              const GridValues &values) {
        if (collapse) {
            std::array<int64_t, 3> kept = {1, 1, 1};
            size_t n = 0;
            for (int64_t d : dims)
                if (d != 1) kept[n++] = d;
            dims = kept;
        }
        zoneRecord(name, 0, dims);
        dataRecord(points, values);
    }

    // A block packed finite element zone of all the grid's points; nodes zero-based, element by
    // element.
    void feZone(const std::string &name, int32_t typeCode, int64_t numElements, const std::vector<int64_t> &points,
                const GridValues &values, const std::vector<int32_t> &nodes) {
        zoneRecord(name, typeCode, {int64_t(points.size()), numElements, 0});
        dataRecord(points, values);
        for (int32_t node : nodes) data.i32(node);
    }

    // typeCode 0 is ordered (sizes I, J, K); the element types are followed by N, E and three cell
    // dimensions of zero.
    void zoneRecord(const std::string &name, int32_t typeCode, const std::array<int64_t, 3> &sizes) {
        header.f32(ZoneMarker);
        header.text(name);
        header.i32(-1);   // no parent
        header.i32(-1);   // static
        header.f64(0.0);  // solution time
        header.i32(-1);   // no colour
        header.i32(typeCode);
        header.i32(0);    // block packing
        header.i32(0);    // all nodal
        header.i32(0);    // no raw face neighbours
        header.i32(0);    // no face neighbour connections
        if (typeCode == 0) {
            for (int64_t d : sizes) header.i32(int32_t(d));
        } else {
            header.i32(int32_t(sizes[0])), header.i32(int32_t(sizes[1]));
            header.i32(0), header.i32(0), header.i32(0);
        }
        header.i32(0);  // no auxiliary data
    }

    void dataRecord(const std::vector<int64_t> &points, const GridValues &values) {
        data.f32(ZoneMarker);
        for (int v = 0; v < numVars; v++) data.i32(FloatType);
        data.i32(0);   // nothing passive
        data.i32(0);   // nothing shared
        data.i32(-1);  // own connectivity
        for (const std::vector<float> &var : values) {
            double lo = 1.0e150, hi = -1.0e150;
            for (int64_t p : points) {
                lo = std::min(lo, double(var[size_t(p)]));
                hi = std::max(hi, double(var[size_t(p)]));
            }
            data.f64(lo), data.f64(hi);
        }
        for (const std::vector<float> &var : values)
            for (int64_t p : points) data.f32(var[size_t(p)]);
    }
};

std::string zoneName(const char *format, int grid, int plane = 0) {
    char name[64];
    snprintf(name, sizeof(name), format, grid, plane);
    return name;
}

const char *const PlaneListMessages[3] = {"Bad -ip list", "Bad -jp list", "Bad -kp list"};

// The preamble, the header records and the data section, written only now that all is read.
bool writeOutput(const std::vector<std::string> &varNames, Writer &writer, const std::string &outputName,
                 bool foreignOutput, std::string *errorText) {
    auto fail = [&](const std::string &message) {
        *errorText = message;
        return false;
    };
    Out out;
    out.swap = foreignOutput;
    for (char c : std::string("#!QFV108")) out.buf.push_back(c);
    out.i32(1);
    out.text("");  // no title
    out.i32(int32_t(varNames.size()));
    for (const std::string &name : varNames) out.text(name);
    FILE *file = fopen(outputName.c_str(), "wb");
    if (file == nullptr) return fail("Cannot open file: " + outputName + " for writing.");
    writer.header.f32(EndOfHeaderMarker);
    bool ok = fwrite(out.buf.data(), 1, out.buf.size(), file) == out.buf.size() &&
              fwrite(writer.header.buf.data(), 1, writer.header.buf.size(), file) == writer.header.buf.size() &&
              fwrite(writer.data.buf.data(), 1, writer.data.buf.size(), file) == writer.data.buf.size();
    if (fclose(file) != 0) ok = false;
    if (!ok) {
        unlink(outputName.c_str());
        return fail("Unable to write the output file.");
    }
    return true;
}

// Unstructured grids: per grid the numbers of nodes, triangles and tetrahedra; then per grid the
// node coordinates (and IBlank) as one record, and the triangles (three nodes each), a flag per
// triangle (read and dropped) and the tetrahedra (four nodes each) as another. Nodes are one-based.
bool readUnstructured(const Plot3dOptions &options, Input &grid, std::vector<std::string> *varNames, Writer *writer) {
    int64_t numGrids = 1;
    if (options.multiGrid) {
        if (!grid.beginRecord() || !grid.int32(&numGrids) || !grid.endRecord()) return false;
        if (numGrids <= 0 || numGrids > 100000) return grid.fail("Error in PLOT3D dimensions.");
    }
    std::vector<std::array<int64_t, 3>> counts(static_cast<size_t>(numGrids));
    if (!grid.beginRecord()) return false;
    for (auto &c : counts)
        for (int64_t &n : c)
            if (!grid.int32(&n)) return false;
    if (!grid.endRecord()) return false;
    for (const auto &c : counts) {
        if (c[0] <= 0 || c[1] < 0 || c[2] < 0 || c[0] > MaxPoints || c[1] * 3 > MaxPoints || c[2] * 4 > MaxPoints ||
            c[1] + c[2] == 0)
            return grid.fail("Error in PLOT3D dimensions.");
        if (c[1] > 0 && c[2] > 0) return grid.fail("Cannot have triangles and tetrahedrons in the same zone\n");
    }
    *varNames = {"X", "Y", "Z"};
    if (options.iBlank) varNames->push_back("IBlnk");
    writer->numVars = int(varNames->size());
    for (size_t g = 0; g < counts.size(); g++) {
        int64_t numNodes = counts[g][0], numTriangles = counts[g][1], numTetrahedra = counts[g][2];
        GridValues values(3);
        if (!grid.beginRecord()) return false;
        for (std::vector<float> &coord : values)
            if (!grid.floats(&coord, numNodes)) return false;
        if (options.iBlank) {
            values.emplace_back(size_t(numNodes));
            for (float &v : values.back()) {
                int64_t flag;
                if (!grid.int32(&flag)) return false;
                v = float(flag);
            }
        }
        if (!grid.endRecord() || !grid.beginRecord()) return false;
        bool triangles = numTriangles > 0;
        int64_t numElements = triangles ? numTriangles : numTetrahedra;
        int nodesPerElement = triangles ? 3 : 4;
        std::vector<int32_t> nodes;
        auto readNodes = [&](int64_t count, std::vector<int32_t> *into) {
            for (int64_t n = 0; n < count; n++) {
                int64_t node;
                if (!grid.int32(&node)) return false;
                if (node < 1 || node > numNodes) {
                    char message[120];
                    snprintf(message, sizeof(message), "FE Cell %lld has bad index of %lld\n",
                             (long long)(n / (into != nullptr ? nodesPerElement : 3) + 1), (long long)node);
                    return grid.fail(message);
                }
                if (into != nullptr) into->push_back(int32_t(node - 1));
            }
            return true;
        };
        if (!readNodes(numTriangles * 3, triangles ? &nodes : nullptr)) return false;
        for (int64_t t = 0; t < numTriangles; t++) {
            int64_t flag;
            if (!grid.int32(&flag)) return false;
        }
        if (!readNodes(numTetrahedra * 4, triangles ? nullptr : &nodes) || !grid.endRecord()) return false;
        std::vector<int64_t> points(static_cast<size_t>(numNodes));
        for (int64_t n = 0; n < numNodes; n++) points[size_t(n)] = n;
        writer->feZone(zoneName("G%-3d US", int(g + 1)), triangles ? 2 : 4, numElements, points, values, nodes);
    }
    return true;
}

}  // namespace

bool Plot3dParsePlaneList(const char *text, std::vector<int> *planes) {
    std::vector<std::pair<long, long>> ranges;
    if (!FenrowParseRangeList(text, MaxPoints, &ranges)) return false;
    for (const auto &[first, last] : ranges)
        for (long p = first; p <= last; p++) planes->push_back(int(p));
    return true;
}

bool Plot3dConvert(const Plot3dOptions &options, const std::string &stem, const std::string &outputName,
                   bool foreignOutput, std::string *errorText) {
    errorText->clear();
    auto fail = [&](const std::string &message) {
        *errorText = message;
        return false;
    };
    if (options.mode == Plot3dMode_NotSet) return fail("PLOT3D Mode not set");
    bool anyPlanes = options.planesGiven[0] || options.planesGiven[1] || options.planesGiven[2];
    if (anyPlanes && options.mode != Plot3dMode_3DWhole && options.mode != Plot3dMode_3DPlanes)
        return fail("PlotMode must be -3dw or -3dp when -ip,-jp,-kp are used");
    Input grid, solution, function;
    for (Input *in : {&grid, &solution, &function}) {
        in->err = errorText;
        in->fortran = options.fortran;
        in->text = !options.binary && !options.fortran;
        in->swap = options.foreign;
    }
    if (options.mode == Plot3dMode_Unstructured) {
        if (options.files != Plot3dFiles_GridOnly)
            return fail("Current version can only process grid files when plot3d unstructured data is converted.  "
                        "Include the -gridonly flag");
        std::vector<std::string> varNames;
        Writer writer;
        writer.header.swap = writer.data.swap = foreignOutput;
        return grid.load(stem + "g") && readUnstructured(options, grid, &varNames, &writer) &&
               writeOutput(varNames, writer, outputName, foreignOutput, errorText);
    }
    int numDims = options.mode == Plot3dMode_1D ? 1 : options.mode == Plot3dMode_2D ? 2 : 3;
    bool readQ = options.files == Plot3dFiles_GridAndQ || options.files == Plot3dFiles_GridFunctionAndQ;
    bool readF = options.files == Plot3dFiles_GridAndFunction || options.files == Plot3dFiles_GridFunctionAndQ;

    Header gridHeader, qHeader, fHeader;
    if (!grid.load(stem + "g") || !readHeader(grid, options.multiGrid, numDims, false, &gridHeader)) return false;
    for (const auto &d : gridHeader.dims) {
        if (d[0] <= 0 || d[1] <= 0 || d[2] <= 0) return fail("Error in PLOT3D dimensions.");
        if (d[0] * d[1] > MaxPoints || d[0] * d[1] * d[2] > MaxPoints) return fail("Error in PLOT3D dimensions.");
    }
    size_t numGrids = gridHeader.dims.size();
    if (readQ) {
        if (!solution.load(stem + "q") || !readHeader(solution, options.multiGrid, numDims, false, &qHeader))
            return false;
        if (qHeader.dims != gridHeader.dims) return fail("inconsistent .g and .q files");
    }
    int64_t numFunctions = 0;
    if (readF) {
        if (!function.load(stem + "f") || !readHeader(function, options.multiGrid, numDims, true, &fHeader))
            return false;
        if (fHeader.dims != gridHeader.dims) return fail("inconsistent .g and .f files");
        numFunctions = fHeader.numVars[0];
        for (int64_t count : fHeader.numVars)
            if (count != numFunctions) return fail("Each grid in multi-grid files must have the same number of variables");
        if (numFunctions <= 0 || numFunctions > 10000) return fail("Error in PLOT3D dimensions.");
    }
    // Plane lists name planes of every grid, so they must fit the smallest.
    for (int d = 0; d < 3; d++)
        for (int p : options.planes[d])
            for (const auto &dims : gridHeader.dims)
                if (p > dims[size_t(d)]) return fail(PlaneListMessages[d]);

    static const char *const coordNames[] = {"X", "Y", "Z"};
    static const char *const momentumNames[] = {"RHO-U", "RHO-V", "RHO-W"};
    std::vector<std::string> varNames;
    for (int n = 0; n < numDims; n++) varNames.push_back(coordNames[n]);
    if (options.iBlank) varNames.push_back("IBlnk");
    if (readQ) {
        varNames.push_back("RHO");
        for (int n = 0; n < numDims; n++) varNames.push_back(momentumNames[n]);
        varNames.push_back("E");
    }
    for (int64_t f = 0; f < numFunctions; f++) varNames.push_back("F" + std::to_string(f + 1));

    Writer writer;
    writer.numVars = int(varNames.size());
    writer.collapse = options.collapse;
    writer.header.swap = writer.data.swap = foreignOutput;
    for (size_t g = 0; g < numGrids; g++) {
        const std::array<int64_t, 3> &dims = gridHeader.dims[g];
        int64_t numPoints = dims[0] * dims[1] * dims[2];
        GridValues values;
        if (!grid.beginRecord()) return false;
        // Eight bytes a coordinate: a double precision file, which this reader does not take.
        if (options.fortran && int64_t(grid.recordLength) == numPoints * (numDims * 8 + (options.iBlank ? 4 : 0)))
            return fail("Double precision PLOT3D files cannot be converted by this version of the converter.");
        for (int n = 0; n < numDims; n++) {
            values.emplace_back();
            if (!grid.floats(&values.back(), numPoints)) return false;
        }
        if (options.iBlank) {
            values.emplace_back(size_t(numPoints));
            for (float &v : values.back()) {
                int64_t flag;
                if (!grid.int32(&flag)) return false;
                v = float(flag);
            }
        }
        if (!grid.endRecord()) return false;
        if (readQ) {
            std::vector<float> constants;  // free-stream Mach number, angle of attack, Reynolds number, time
            if (!solution.beginRecord() || !solution.floats(&constants, 4) || !solution.endRecord()) return false;
            if (!solution.beginRecord()) return false;
            for (int n = 0; n < numDims + 2; n++) {
                values.emplace_back();
                if (!solution.floats(&values.back(), numPoints)) return false;
            }
            if (!solution.endRecord()) return false;
        }
        if (readF) {
            if (!function.beginRecord()) return false;
            for (int64_t f = 0; f < numFunctions; f++) {
                values.emplace_back();
                if (!function.floats(&values.back(), numPoints)) return false;
            }
            if (!function.endRecord()) return false;
        }

        int gridNumber = int(g + 1);
        auto linear = [&](int64_t i, int64_t j, int64_t k) { return (k * dims[1] + j) * dims[0] + i; };
        if (options.mode == Plot3dMode_3DPlanes) {
            // A zone per listed plane, direction by direction; with no lists, every K plane.
            bool none = !anyPlanes;
            for (int d = 0; d < 3; d++) {
                std::vector<int> planes = options.planes[d];
                if (none && d == 2)
                    for (int p = 1; p <= dims[2]; p++) planes.push_back(p);
                int a = d == 0 ? 1 : 0, b = d == 2 ? 1 : 2;  // the plane's own directions, a fastest
                for (int plane : planes) {
                    std::vector<int64_t> points;
                    for (int64_t q = 0; q < dims[size_t(b)]; q++)
                        for (int64_t p = 0; p < dims[size_t(a)]; p++) {
                            int64_t ijk[3];
                            ijk[d] = plane - 1, ijk[a] = p, ijk[b] = q;
                            points.push_back(linear(ijk[0], ijk[1], ijk[2]));
                        }
                    writer.zone(zoneName("G%-3d,P%-3d ", gridNumber, plane), {dims[size_t(a)], dims[size_t(b)], 1},
                                points, values);
                }
            }
        } else {
            // The whole grid, or in -3dw the listed indices of each direction that has a list.
            std::vector<int64_t> kept[3];
            for (int d = 0; d < 3; d++) {
                if (options.planesGiven[d])
                    for (int p : options.planes[d]) kept[d].push_back(p - 1);
                else
                    for (int64_t p = 0; p < dims[size_t(d)]; p++) kept[d].push_back(p);
            }
            std::vector<int64_t> points;
            for (int64_t k : kept[2])
                for (int64_t j : kept[1])
                    for (int64_t i : kept[0]) points.push_back(linear(i, j, k));
            writer.zone(zoneName("G%-3d", gridNumber),
                        {int64_t(kept[0].size()), int64_t(kept[1].size()), int64_t(kept[2].size())}, points, values);
        }
    }

    return writeOutput(varNames, writer, outputName, foreignOutput, errorText);
}
