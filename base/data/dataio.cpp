// Reading and writing the binary data file. The file has no padding, no alignment and no record
// lengths: every record is parsed to find the next. Values are the exception: their blocks are
// never parsed, only located (one fseek each), and registered with their offsets so that load on
// demand and memory mapping can find them later.
#include "base/data/dataio.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cmath>
#include <cstring>
#include <iterator>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

#include "base/data/dataload.h"
#include "base/data/datautil.h"
#include "base/data/face.h"
#include "base/data/share.h"
#include "base/data/strand.h"
#include "base/data/textwrite.h"
#include "base/interact/fileio.h"
#include "base/kernel/alloc.h"
#include "base/kernel/auxdata.h"
#include "base/kernel/errors.h"
#include "base/kernel/genbase.h"
#include "base/kernel/globals.h"
#include "base/kernel/strlist.h"
#include "base/kernel/strutil.h"

namespace {

// ---- markers and the codes that differ between file and memory -----------------------------

constexpr float ZoneMarker = 299.0f, GeomMarker = 399.0f, TextMarker = 499.0f, CustomLabelMarker = 599.0f,
                UserRecMarker = 699.0f, DataSetAuxMarker = 799.0f, VarAuxMarker = 899.0f, EndOfHeaderMarker = 357.0f;

// Zone type: the file numbers the FE types differently from memory.
const ZoneType_e ZoneTypeFromFile[6] = {ZoneType_Ordered, ZoneType_FELineSeg, ZoneType_FETriangle,
                                        ZoneType_FEQuad, ZoneType_FETetra, ZoneType_FEBrick};
int32_t zoneTypeToFile(ZoneType_e type) {
    for (int32_t code = 0; code < 6; code++)
        if (ZoneTypeFromFile[code] == type) return code;
    return 0;
}

// Value location: the file says 0 nodal, 1 cell-centred.
ValueLocation_e locationFromFile(int32_t code) { return code == 1 ? ValueLocation_CellCentered : ValueLocation_Nodal; }
int32_t locationToFile(ValueLocation_e location) { return location == ValueLocation_CellCentered ? 1 : 0; }

// Text and geometry position: the file's 4 (grid 3D) is memory's 6.
bool coordSysFromFile(int32_t code, int32_t *coordSys) {
    if (code == 0 || code == 1) *coordSys = code;
    else if (code == 4) *coordSys = 6;
    else return false;
    return true;
}
int32_t coordSysToFile(int32_t coordSys) { return coordSys == 6 ? 4 : coordSys; }

// ---- primitives ---------------------------------------------------------------------------

template <typename T>
T swapped(T value) {
    unsigned char bytes[sizeof(T)];
    memcpy(bytes, &value, sizeof(T));
    for (size_t i = 0; i < sizeof(T) / 2; i++) std::swap(bytes[i], bytes[sizeof(T) - 1 - i]);
    memcpy(&value, bytes, sizeof(T));
    return value;
}

template <typename T>
bool readRaw(FileStream_s *stream, T *value) {
    if (fread(value, sizeof(T), 1, stream->File) != 1) return false;
    if (!stream->IsByteOrderNative) *value = swapped(*value);
    return true;
}

template <typename T>
bool writeRaw(FileStream_s *stream, T value) {
    if (!stream->IsByteOrderNative) value = swapped(value);
    return fwrite(&value, sizeof(T), 1, stream->File) == 1;
}

// What the reader knows about the file it is in.
struct Reader {
    FileStream_s *stream;
    int version;
    const char *message = nullptr;  // a specific failure, reported once by the caller

    bool fail(const char *text) {
        if (message == nullptr) message = text;
        return false;
    }
    // Integers: 32-bit from version 64 on, floats rounded toward zero before that.
    bool readInt(int32_t min, int32_t max, int32_t *value) {
        if (version >= 64) {
            if (!readRaw(stream, value)) return false;
        } else {
            float f;
            if (!readRaw(stream, &f) || std::isnan(f)) return false;
            double d = std::trunc(double(f) + (f >= 0 ? 1.0e-10 : -1.0e-10));
            if (d < double(INT32_MIN) || d > double(INT32_MAX)) return false;
            *value = int32_t(d);
        }
        return *value >= min && *value <= max;
    }
    bool readDouble(double *value, double limit = 1.0e150) {
        return readRaw(stream, value) && std::isfinite(*value) && std::fabs(*value) <= limit;
    }
    bool readMarker(float *marker) { return readRaw(stream, marker); }
    // One 32-bit integer per character, ended by 0; characters past maxLength are read and dropped.
    bool readString(size_t maxLength, std::string *text) {
        text->clear();
        for (;;) {
            int32_t c;
            if (!readRaw(stream, &c) || c < 0 || c > 255) return false;
            if (c == 0) return true;
            if ((c >= 1 && c <= 31 && c != 10) || (c >= 128 && c <= 159)) c = ' ';
            if (text->size() < maxLength) text->push_back(char(c));
        }
    }
    // Before version 63 a string is a fixed count of float character codes.
    bool readFixedString(int count, std::string *text) {
        text->clear();
        for (int n = 0; n < count; n++) {
            float f;
            if (!readRaw(stream, &f) || !std::isfinite(f)) return false;
            int c = f >= 0.0f && f <= 255.0f ? int(f) : -1;
            if (c == 0) continue;
            text->push_back((c >= 32 && c <= 127) || (c >= 160 && c <= 255) ? char(c) : '?');
        }
        return true;
    }
    // A string of the file: variable length from version 63 on, fixed before.
    bool readName(size_t maxLength, int oldCount, std::string *text) {
        return version >= 63 ? readString(maxLength, text) : readFixedString(oldCount, text);
    }
    bool readAuxItem(AuxData_s *aux, const char *badRecord) {
        std::string name, value;
        int32_t type;
        if (!readString(128, &name)) return fail(badRecord);
        if (!AuxDataIsValidName(name.c_str())) return fail("Invalid auxiliary data name.");
        if (!readRaw(stream, &type)) return fail(badRecord);
        if (type != 0) return fail("Unsupported auxiliary data type");
        if (!readString(32000, &value)) return fail(badRecord);
        if (aux != nullptr && !AuxDataSetItem(aux, name.c_str(), ArbParam_t(value.c_str()), AuxDataType_String, true))
            return fail("Out of memory loading binary data file header");
        return true;
    }
};

std::string trim(const std::string &text) {
    size_t first = text.find_first_not_of(" \t");
    if (first == std::string::npos) return std::string();
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

// Newlines in variable names are kept as backslash and n.
std::string escapeNewlines(const std::string &text) {
    std::string out;
    for (char c : text) {
        if (c == '\n') out += "\\n";
        else out.push_back(c);
    }
    return out;
}

// ---- the header ---------------------------------------------------------------------------

struct ZoneHeader_s {
    ZoneSpec_s Spec;                        // Name and AuxData owned here until handed over
    std::vector<ValueLocation_e> Locations; // by variable
    bool IsPlaceholder = false;
    bool RawFaceNeighborsSupplied = false;
    int32_t NumMiscFaceNeighbors = 0;
    bool HasParentError = false;
};

struct Header_s {
    std::string Title;
    std::vector<std::string> VarNames;
    std::vector<ZoneHeader_s> Zones;
    std::vector<std::vector<std::string>> CustomLabels;
    AuxData_s *DataSetAux = nullptr;
    std::vector<AuxData_s *> VarAux;
    ~Header_s() {
        for (ZoneHeader_s &zone : Zones) CleanoutZoneSpec(&zone.Spec);
        AuxDataDealloc(&DataSetAux);
        for (AuxData_s *&aux : VarAux) AuxDataDealloc(&aux);
    }
};

// The short zone header of files before version 101: name, format, colour, I, J, K.
bool readOldZoneHeader(Reader &r, int numVars, ZoneHeader_s *zone) {
    ZoneSpec_s &spec = zone->Spec;
    std::string name;
    int32_t format, color = -1;
    if (!r.readName(MaxZoneNameLength, 10, &name) || !r.readInt(0, 3, &format)) return r.fail("Datafile is corrupted");
    spec.Name = DupString(trim(name).c_str());
    if (r.version >= 63 && !r.readInt(-1, 255, &color)) return r.fail("Datafile is corrupted");
    if (r.version < 60) {
        float unused;
        if (!readRaw(r.stream, &unused)) return r.fail("Datafile is corrupted");
    }
    // Colours 15 to 22 of files before version 70 are 8 to 15 now.
    if (r.version < 70 && color >= 15 && color <= 22) color -= 7;
    spec.ZoneColor = int16_t(color < 0 || color > 63 ? -2 : color);
    spec.IsBlock = format == 0 || format == 2;
    zone->Locations.assign(size_t(numVars), ValueLocation_Nodal);
    int32_t k = 1;
    if (!r.readInt(0, MAXINDEX, &spec.NumPtsI) || !r.readInt(0, MAXINDEX, &spec.NumPtsJ) ||
        (r.version >= 60 && !r.readInt(0, MAXINDEX, &k)))
        return r.fail("Datafile is corrupted");
    if (format >= 2) {
        static const ZoneType_e oldElementTypes[5] = {ZoneType_FETriangle, ZoneType_FEQuad, ZoneType_FETetra,
                                                      ZoneType_FEBrick, ZoneType_FELineSeg};
        if (r.version < 61) {
            spec.Type = ZoneType_FEQuad;
        } else {
            if (k < 0 || k > 4) return r.fail("Datafile corrupted: Invalid element type for FE DataSet");
            spec.Type = oldElementTypes[k];
        }
        spec.NumPtsK = GetNodesPerElement(spec.Type);
    } else {
        spec.NumPtsK = k;
        if (spec.NumPtsI == 0 || spec.NumPtsJ == 0 || spec.NumPtsK == 0)
            return r.fail(BadOrderedZoneDimensionsMessage);
    }
    return true;
}

// An ordered zone may hold at most 2147483646 points in all.
bool zonePointsFit(Reader &r, const ZoneSpec_s &spec) {
    if (ZoneTypeIsFE(spec.Type) || double(spec.NumPtsI) * spec.NumPtsJ * spec.NumPtsK <= double(MAXINDEX)) return true;
    ErrMsg("Total Number of points for a zone exceeds %ld", long(MAXINDEX));
    return r.fail("");
}

bool readZoneHeader(Reader &r, int numVars, ZoneHeader_s *zone) {
    if (r.version < 101) return readOldZoneHeader(r, numVars, zone) && zonePointsFit(r, zone->Spec);
    ZoneSpec_s &spec = zone->Spec;
    std::string name;
    int32_t parent = -1, strand = -1, color, type, packing, locationGiven;
    if (!r.readString(MaxZoneNameLength, &name)) return false;
    spec.Name = DupString(trim(name).c_str());
    if ((r.version >= 107 && !r.readInt(-1, MaxNumZonesOrVars - 1, &parent)) ||
        (r.version >= 106 && (!r.readInt(-2, MaxStrandID, &strand) || !r.readDouble(&spec.SolutionTime))) ||
        !r.readInt(-1, 63, &color) || !r.readInt(0, 5, &type) || !r.readInt(0, 1, &packing) ||
        !r.readInt(0, 1, &locationGiven))
        return false;
    spec.ParentZone = EntIndex_t(parent);
    spec.StrandID = strand;
    spec.ZoneColor = int16_t(color < 0 ? -2 : color);  // the file's "none" is -1
    spec.Type = ZoneTypeFromFile[type];
    spec.IsBlock = packing == 0;
    zone->Locations.assign(size_t(numVars), ValueLocation_Nodal);
    for (int v = 0; locationGiven && v < numVars; v++) {
        int32_t code;
        if (!r.readInt(0, 1, &code)) return false;
        zone->Locations[size_t(v)] = locationFromFile(code);
        if (code == 1 && !spec.IsBlock)
            return r.fail("Invalid datafile: cell centered variable must be in block format.");
    }
    int32_t raw = 0;
    if (r.version >= 108 && !r.readInt(0, 1, &raw)) return false;
    if (raw == 1 && (spec.Type == ZoneType_Ordered || spec.Type == ZoneType_FELineSeg))
        return r.fail("Invalid datafile: raw face neighbors may not be supplied for ordered or FE line segment zones.");
    zone->RawFaceNeighborsSupplied = raw == 1;
    if (!r.readInt(0, MAXINDEX, &zone->NumMiscFaceNeighbors)) return false;
    spec.FNNumBndryConns = zone->NumMiscFaceNeighbors;
    if (zone->NumMiscFaceNeighbors != 0) {
        int32_t mode;
        if (!r.readInt(0, 3, &mode)) return false;
        spec.FNMode = FaceNeighborMode_e(mode);
        if (spec.Type != ZoneType_Ordered && r.version >= 108) {
            int32_t complete;
            if (!r.readInt(0, 1, &complete)) return false;
            spec.AutoAssignFN = complete == 0;
        }
    }
    if (spec.Type == ZoneType_Ordered) {
        if (!r.readInt(0, MAXINDEX, &spec.NumPtsI) || !r.readInt(0, MAXINDEX, &spec.NumPtsJ) ||
            !r.readInt(0, MAXINDEX, &spec.NumPtsK))
            return false;
        zone->IsPlaceholder = spec.NumPtsI == 0 && spec.NumPtsJ == 0 && spec.NumPtsK == 0;
        if (!zone->IsPlaceholder && (spec.NumPtsI == 0 || spec.NumPtsJ == 0 || spec.NumPtsK == 0))
            return r.fail(BadOrderedZoneDimensionsMessage);
        if (!zonePointsFit(r, spec)) return false;
    } else {
        if (!r.readInt(0, MAXINDEX, &spec.NumPtsI) || !r.readInt(0, MAXINDEX, &spec.NumPtsJ) ||
            !r.readInt(0, MAXINDEX, &spec.ICellDim) || !r.readInt(0, MAXINDEX, &spec.JCellDim) ||
            !r.readInt(0, MAXINDEX, &spec.KCellDim))
            return false;
        spec.NumPtsK = GetNodesPerElement(spec.Type);
    }
    for (;;) {
        int32_t more;
        if (!r.readInt(0, 1, &more)) return false;
        if (more == 0) break;
        if (spec.AuxData == nullptr && (spec.AuxData = AuxDataAlloc()) == nullptr)
            return r.fail("Out of memory loading binary data file header");
        if (!r.readAuxItem(spec.AuxData, "Invalid header in binary datafile")) return false;
    }
    // Files before version 106 kept a zone's time as the auxiliary item "Common.Time".
    ArbParam_t timeText;
    AuxDataType_e auxType;
    bool retain;
    LgIndex_t index;
    if (r.version < 106 && spec.AuxData != nullptr &&
        AuxDataGetItemByName(spec.AuxData, "Common.Time", &timeText, &auxType, &retain)) {
        const char *text = reinterpret_cast<const char *>(timeText);
        char *end = nullptr;
        double time = strtod(text, &end);
        while (end != nullptr && (*end == ' ' || *end == '\t')) end++;
        if (end != text && end != nullptr && *end == '\0' && AuxDataGetItemIndex(spec.AuxData, "Common.Time", &index)) {
            spec.SolutionTime = time;
            spec.StrandID = -2;
            AuxDataDeleteItemByIndex(spec.AuxData, index);
        }
    }
    return true;
}

bool readTextRecord(Reader &r, Text_s *text) {
    int32_t coordSys;
    if (!r.readInt(0, 4, &coordSys)) return r.fail("Invalid text record");
    if (!coordSysFromFile(coordSys, &text->PositionCoordSys)) return r.fail("Invalid text coordinate system.");
    bool ok = r.readInt(0, 1, &text->Scope) && r.readDouble(&text->X) && r.readDouble(&text->Y) &&
              r.readDouble(&text->Z) && r.readInt(0, 10, &text->Font) && r.readInt(0, 2, &text->CharHeightUnits) &&
              r.readDouble(&text->Height) && r.readInt(0, 2, &text->BoxType) && r.readDouble(&text->BoxMargin) &&
              r.readDouble(&text->BoxLineThickness) && r.readInt(0, 255, &text->BoxOutlineColor) &&
              r.readInt(0, 255, &text->BoxFillColor) && r.readDouble(&text->Angle) &&
              r.readDouble(&text->LineSpacing) && r.readInt(0, 8, &text->Anchor) &&
              r.readInt(-1, MaxNumZonesOrVars, &text->Zone) && r.readInt(0, 255, &text->Color) &&
              r.readString(120000, &text->MacroFunctionCommand) && r.readInt(0, 2, &text->Clipping) &&
              r.readString(size_t(GeneralBase.MaxChrsInTextLabels), &text->Text);
    if (text->Clipping == 2) text->Clipping = 1;
    return ok || r.fail("Invalid text record");
}

bool readGeomValue(Reader &r, int32_t dataType, double *value) {
    if (dataType == 1) {
        float f;
        if (!readRaw(r.stream, &f)) return false;
        *value = f;
        return std::isfinite(f);
    }
    return r.readDouble(value);
}

bool readGeomRecord(Reader &r, Geom_s *geom) {
    int32_t coordSys;
    if (!r.readInt(0, 4, &coordSys)) return r.fail("Invalid geometry record");
    if (!coordSysFromFile(coordSys, &geom->PositionCoordSys)) return r.fail("Invalid geometry coordinate system");
    bool ok = r.readInt(0, 1, &geom->Scope) && (r.version < 102 || r.readInt(0, 1, &geom->DrawOrder)) &&
              r.readDouble(&geom->X) && r.readDouble(&geom->Y) && r.readDouble(&geom->Z) &&
              r.readInt(-1, MaxNumZonesOrVars, &geom->Zone) && r.readInt(0, 255, &geom->Color) &&
              r.readInt(0, 255, &geom->FillColor) && r.readInt(0, 1, &geom->IsFilled) &&
              r.readInt(0, 4, &geom->GeomType) && r.readInt(0, 5, &geom->LinePattern) &&
              r.readDouble(&geom->PatternLength) && r.readDouble(&geom->LineThickness) &&
              r.readInt(2, 720, &geom->NumEllipsePts) && r.readInt(0, 2, &geom->ArrowheadStyle) &&
              r.readInt(0, 3, &geom->ArrowheadAttachment) && r.readDouble(&geom->ArrowheadSize) &&
              r.readDouble(&geom->ArrowheadAngle) && r.readString(120000, &geom->MacroFunctionCommand) &&
              r.readInt(1, 2, &geom->DataType) && r.readInt(0, 2, &geom->Clipping);
    if (!ok) return r.fail("Invalid geometry record");
    if (geom->Clipping == 2) geom->Clipping = 1;
    if (geom->PositionCoordSys == 6 && geom->GeomType != 0)
        return r.fail("Mismatch between geometry coordinate system and geometry type");
    if (geom->GeomType != 0) {
        int sizes = geom->GeomType == 1 || geom->GeomType == 4 ? 2 : 1;
        geom->Sizes.resize(size_t(sizes));
        for (double &size : geom->Sizes)
            if (!readGeomValue(r, geom->DataType, &size)) return r.fail("Invalid geometry record");
        return true;
    }
    int32_t numSegments;
    if (!r.readInt(1, 50, &numSegments)) return r.fail("Invalid geometry record");
    int64_t totalPoints = 0;
    for (int32_t s = 0; s < numSegments; s++) {
        int32_t numPts;
        if (!r.readInt(1, MAXINDEX, &numPts)) return r.fail("Invalid geometry record");
        totalPoints += numPts;
        if (totalPoints > GeneralBase.MaxPtsInALine) return r.fail("Geometry is too big");
        bool is3D = geom->PositionCoordSys == 6;
        for (auto *coords : {&geom->SegmentX, &geom->SegmentY, &geom->SegmentZ}) {
            if (coords == &geom->SegmentZ && !is3D) break;
            coords->emplace_back(size_t(numPts));
            for (double &value : coords->back())
                if (!readGeomValue(r, geom->DataType, &value)) return r.fail("Invalid geometry record");
        }
    }
    return true;
}

bool readHeader(Reader &r, Header_s *header, DataFileExtras_s *extras) {
    int32_t numVars;
    if (!r.readName(MaxDataSetTitleLength, 80, &header->Title) || !r.readInt(0, MaxNumZonesOrVars, &numVars))
        return false;
    header->Title = trim(header->Title);
    header->VarNames.resize(size_t(numVars));
    header->VarAux.assign(size_t(numVars), nullptr);
    for (std::string &name : header->VarNames) {
        if (!r.readName(MaxVarNameLength, 5, &name)) return false;
        name = escapeNewlines(name);
    }
    for (;;) {
        float marker;
        if (!r.readMarker(&marker)) return false;
        if (marker == EndOfHeaderMarker) break;
        if (marker == ZoneMarker) {
            if (header->Zones.size() >= size_t(MaxNumZonesOrVars))
                return r.fail("Exceeded maximum number of zones allowed (32700).");
            header->Zones.emplace_back();
            if (!readZoneHeader(r, numVars, &header->Zones.back())) return false;
        } else if (marker == TextMarker) {
            if (r.version < 101) return r.fail("Invalid text record");  // the old field order is not kept
            Text_s text;
            if (!readTextRecord(r, &text)) return false;
            extras->Texts.push_back(std::move(text));
        } else if (marker == GeomMarker) {
            if (r.version < 101) return r.fail("Invalid geometry record");
            Geom_s geom;
            if (!readGeomRecord(r, &geom)) return false;
            extras->Geoms.push_back(std::move(geom));
        } else if (marker == CustomLabelMarker) {
            int32_t count;
            if (!r.readInt(1, MAXINDEX, &count)) return r.fail("Invalid custom axis label record in binary datafile");
            std::vector<std::string> labels(size_t(std::min(count, 100000)));
            for (int32_t n = 0; n < count; n++) {
                std::string label;
                if (!r.readString(49, &label)) return r.fail("Invalid custom axis label record in binary datafile");
                if (size_t(n) < labels.size()) labels[size_t(n)] = trim(label);
            }
            if (header->CustomLabels.size() < size_t(MaxCustomLabelSets)) header->CustomLabels.push_back(labels);
        } else if (marker == UserRecMarker) {
            std::string record;
            if (!r.readString(500, &record)) return r.fail("Invalid USERREC record in binary datafile");
            extras->UserRecs.push_back(record);
        } else if (marker == DataSetAuxMarker) {
            if (header->DataSetAux == nullptr && (header->DataSetAux = AuxDataAlloc()) == nullptr)
                return r.fail("Out of memory loading binary data file header");
            if (!r.readAuxItem(header->DataSetAux, "Invalid DATASETAUXDATA record in binary datafile")) return false;
        } else if (marker == VarAuxMarker) {
            int32_t var;
            if (!r.readInt(0, numVars - 1, &var)) return r.fail("Invalid VARAUXDATA variable number association");
            AuxData_s *&aux = header->VarAux[size_t(var)];
            if (aux == nullptr && (aux = AuxDataAlloc()) == nullptr)
                return r.fail("Out of memory loading binary data file header");
            if (!r.readAuxItem(aux, "Invalid VARAUXDATA record in binary datafile")) return false;
        } else {
            return false;
        }
    }
    // Parent zones must name another zone of the file.
    bool parentsOk = true;
    for (size_t z = 0; z < header->Zones.size(); z++) {
        EntIndex_t parent = header->Zones[z].Spec.ParentZone;
        if (parent < 0) continue;
        if (size_t(parent) == z) {
            ErrMsg("Parent zone assignment for zone %d may not be self referencing.", int(z) + 1);
            parentsOk = false;
        } else if (size_t(parent) >= header->Zones.size()) {
            ErrMsg("Parent zone assignment for zone %d must be to an existing zone within the datafile.", int(z) + 1);
            parentsOk = false;
        }
    }
    if (!parentsOk) return r.fail("");  // reported above; no general message
    return true;
}

}  // namespace

FileStream_s *FileStreamAlloc(FILE *file, bool isByteOrderNative) {
    auto *stream = static_cast<FileStream_s *>(newmalloc(sizeof(FileStream_s)));
    if (stream != nullptr) *stream = {file, isByteOrderNative};
    return stream;
}

void FileStreamDealloc(FileStream_s **stream) {
    newfree(*stream);
    *stream = nullptr;
}

int GetInputVersion(FileStream_s *stream) {
    long start = ftell(stream->File);
    char magic[4];
    if (fread(magic, 1, 4, stream->File) == 4 && memcmp(magic, "#!QF", 4) == 0) {
        char tag[5] = {0};
        if (fread(tag, 1, 4, stream->File) == 4 && tag[0] == 'V') {
            int version = 0;
            for (int i = 1; i < 4 && tag[i] >= '0' && tag[i] <= '9'; i++) version = version * 10 + (tag[i] - '0');
            if (version >= 109) {
                ErrMsg("Binary file version newer than Orvanex version. Upgrade Orvanex or use an older Fenrow to "
                       "produce the datafile.");
                return version;
            }
            if (version >= 70) {
                int32_t test;
                if (fread(&test, sizeof(test), 1, stream->File) != 1) return 0;
                stream->IsByteOrderNative = test == 1;
                return version;
            }
        }
    }
    // Files before magic numbers start with their version as a float, in either byte order.
    static const float oldVersions[] = {7.0f, 6.3f, 6.2f, 6.1f, 6.0f, 5.0f, 4.7f, 4.6f,
                                        4.5f, 4.4f, 4.3f, 4.2f, 4.1f, 4.0f};
    fseek(stream->File, start, SEEK_SET);
    float value;
    if (fread(&value, sizeof(value), 1, stream->File) != 1) return 0;
    for (bool native : {true, false}) {
        float candidate = native ? value : swapped(value);
        for (float old : oldVersions)
            if (memcmp(&candidate, &old, sizeof(float)) == 0) {
                stream->IsByteOrderNative = native;
                return int(10.0 * double(candidate) + 0.499);
            }
    }
    return 0;
}

namespace {

struct FileCloser {
    void operator()(FILE *file) const {
        FILE *f = file;
        Close_File(&f, false);
    }
};
using FilePtr = std::unique_ptr<FILE, FileCloser>;

struct DataSetDeleter {
    void operator()(DataSet_s *dataSet) const { DeallocDataSet(&dataSet); }
};
using DataSetPtr = std::unique_ptr<DataSet_s, DataSetDeleter>;

// Values of a variable as the file holds them: cell-centred ordered blocks have the pure layout
// before version 103, every I x J x K slot in 103, and the in-memory ghost layout after.
DataValueStructure_e structureOf(int version) {
    return version < 103 ? DataValueStructure_Classic
                         : version == 103 ? DataValueStructure_Ordered : DataValueStructure_ClassicGhost;
}

int64_t valuesInFile(const ZoneSpec_s &spec, ValueLocation_e location, int version) {
    if (location == ValueLocation_Nodal || ZoneTypeIsFE(spec.Type)) return CalcNumValuesNeededAt(&spec, location);
    if (version == 103) return int64_t(spec.NumPtsI) * spec.NumPtsJ * spec.NumPtsK;
    if (version < 103)
        return int64_t(std::max(spec.NumPtsI - 1, 1)) * std::max(spec.NumPtsJ - 1, 1) * std::max(spec.NumPtsK - 1, 1);
    return CalcNumElementValuesNeeded(&spec);
}

// An open binary file positioned after its version, with its header read.
struct OpenedFile_s {
    FilePtr File;
    int64_t Size = 0;
    FileStream_s Stream{nullptr, true};
    int Version = 0;
};

// Opens the file, finds its version at the offset and checks that it is one this reader knows.
bool openBinaryFile(const char *fileName, int64_t offset, OpenedFile_s *opened) {
    FILE *raw = nullptr;
    if (!Open_File(&raw, fileName, true, false, false, true, false)) return false;
    opened->File.reset(raw);
    struct stat st;
    if (fstat(fileno(raw), &st) != 0 || fseeko(raw, offset, SEEK_SET) != 0) {
        ErrMsg("Invalid header in binary datafile");
        return false;
    }
    opened->Size = int64_t(st.st_size);
    opened->Stream = FileStream_s{raw, true};
    int version = GetInputVersion(&opened->Stream);
    if (version >= 109) return false;  // reported by GetInputVersion
    bool supported = (version >= 40 && version <= 71) || version == 75 || (version >= 100 && version <= 108);
    if (!supported) {
        ErrMsg("Invalid header in binary datafile");
        return false;
    }
    opened->Version = version;
    return true;
}

bool reportReaderFailure(const Reader &reader, const char *general) {
    if (reader.message == nullptr) ErrMsg("%s", general);
    else if (reader.message[0] != '\0') ErrMsg("%s", reader.message);
    return false;
}

// Where one zone's blocks lie in the file, as the pass over its data section found them. Kept
// for zones passed over too, so that a loaded zone sharing with one of them can read the values
// from the block that zone holds.
struct ZoneBlocks_s {
    bool Parsed = false;
    bool Loaded = false;                      // read into the data set
    std::vector<FieldDataType_e> Types;
    std::vector<int32_t> Passive, ShareZone;  // ShareZone: the file's zone whose values are used, or -1
    std::vector<double> Mins, Maxs;
    std::vector<int64_t> Offsets;             // first value of each stored variable
    std::vector<LgIndex_t> ValueOffsetInPoint;
    LgIndex_t PointBytes = 0, NumStored = 0;  // point data: bytes of one point, stored variables
    int32_t ConnectivityShare = -1;
    int64_t ConnectivityOffset = -1;          // FE node list, when the zone has one of its own
};

struct DataSectionReader {
    Reader &r;
    const char *fileName;
    int64_t fileSize;
    DataSet_s *dataSet;
    Header_s &header;
    const DataFileReadPlan_s &plan;
    std::vector<ZoneBlocks_s> blocks;

    bool fail(const char *text) { return r.fail(text); }
    bool failf(const char *format, int a, int b = 0, int c = 0) {
        ErrMsg(format, a, b, c);
        return r.fail("");
    }
    EntIndex_t dataSetZone(int32_t fileZone) const { return EntIndex_t(fileZone + plan.ZoneOffset); }
    EntIndex_t dataSetVar(EntIndex_t fileVar) const {
        return plan.VarMap != nullptr ? (*plan.VarMap)[size_t(fileVar)] : fileVar;
    }
    bool skipsIndices(const ZoneSpec_s &spec) const {
        return spec.Type == ZoneType_Ordered && (plan.Skip[0] != 1 || plan.Skip[1] != 1 || plan.Skip[2] != 1);
    }
    bool isPlaceholder(int32_t zone) const { return header.Zones[size_t(zone)].IsPlaceholder; }

    bool seekPast(int64_t offset, int64_t bytes) {
        if (offset + bytes > fileSize) return fail("Data file appears to be truncated.");
        return fseeko(r.stream->File, offset + bytes, SEEK_SET) == 0;
    }

    // The zone whose block a loaded zone's shared variable really comes from: the first zone
    // along the chain of shares that was loaded, or else the one that holds the values.
    int32_t shareSource(int32_t source, EntIndex_t var) const {
        while (!blocks[size_t(source)].Loaded && blocks[size_t(source)].ShareZone[size_t(var)] >= 0)
            source = blocks[size_t(source)].ShareZone[size_t(var)];
        return source;
    }

    // Reads (load) or passes over one zone's data section.
    bool readZone(int32_t zone, bool load) {
        ZoneHeader_s &zh = header.Zones[size_t(zone)];
        ZoneBlocks_s &b = blocks[size_t(zone)];
        EntIndex_t numVars = EntIndex_t(header.VarNames.size());
        float marker;
        if (!r.readMarker(&marker) || marker != ZoneMarker) return fail("Corrupt input file");
        b.Types.assign(size_t(numVars), FieldDataType_Float);  // all floats before 70
        for (FieldDataType_e &type : b.Types) {
            int32_t code;
            if (r.version < 70) break;
            if (!readRaw(r.stream, &code)) return fail("Unable to skip over variable types.");
            if (code < 1 || code > 6) return fail("Invalid data type - binary input file corrupted");
            type = FieldDataType_e(code);
        }
        b.Passive.assign(size_t(numVars), 0);
        b.ShareZone.assign(size_t(numVars), -1);
        int32_t flag = 0;
        if (r.version >= 101) {
            if (r.version >= 105) {
                if (!r.readInt(0, 1, &flag)) return fail("Binary datafile corrupted!");
                for (int32_t &p : b.Passive)
                    if (flag && !r.readInt(0, 1, &p)) return fail("Binary datafile corrupted!");
            }
            if (!r.readInt(0, 1, &flag)) return fail("Binary datafile corrupted!");
            for (int32_t &s : b.ShareZone)
                if (flag && !r.readInt(-1, MaxNumZonesOrVars - 1, &s)) return fail("Binary datafile corrupted!");
            if (!r.readInt(-1, MaxNumZonesOrVars - 1, &b.ConnectivityShare)) return fail("Binary datafile corrupted!");
        } else if (r.version >= 46) {
            // Variables whose values are those of the previous zone of the file.
            int32_t count;
            if (!r.readInt(0, numVars, &count)) return fail("Datafile is corrupted");
            for (int32_t n = 0; n < count; n++) {
                int32_t var;
                if (!r.readInt(1, numVars, &var)) return fail("Datafile is corrupted");
                if (zone == 0)
                    return fail("Cannot duplicate variables from the first zone since there are no previous zones to "
                                "duplicate from.");
                b.ShareZone[size_t(var - 1)] = zone - 1;
            }
        }
        if (b.ConnectivityShare >= zone)
            return failf("Zone %d is attempting to share connectivity with an unloaded zone", dataSetZone(zone) + 1);
        b.Parsed = true;
        if (zh.IsPlaceholder) return true;
        if (load && !checkShares(zone)) return false;

        b.Mins.assign(size_t(numVars), 0.0);
        b.Maxs.assign(size_t(numVars), 0.0);
        for (EntIndex_t v = 0; r.version >= 103 && v < numVars; v++)
            if (isStored(b, v) && (!r.readDouble(&b.Mins[size_t(v)]) || !r.readDouble(&b.Maxs[size_t(v)])))
                return fail("Binary datafile corrupted!");
        if (!locateValues(zone)) return false;
        if (load) {
            b.Loaded = true;
            if (!makeVariables(zone)) return false;
        }
        if (r.version >= 62 && r.version <= 100 && ZoneTypeIsFE(zh.Spec.Type)) {
            int32_t sharesPrevious;
            if (!r.readInt(0, 1, &sharesPrevious)) return fail("Datafile is corrupted");
            if (sharesPrevious == 1) {
                if (zone == 0 || isPlaceholder(zone - 1) ||
                    !ZoneStructuresAreConnectivityShareCompatible(&zh.Spec, &header.Zones[size_t(zone - 1)].Spec))
                    return failf("Zone %d is attempting to share connectivity with a zone that has not been loaded.",
                                 dataSetZone(zone) + 1);
                b.ConnectivityShare = zone - 1;
            }
        }
        return readConnectivity(zone, load) && readFaceNeighbors(zone, load);
    }

    static bool isStored(const ZoneBlocks_s &b, EntIndex_t v) {
        return b.Passive[size_t(v)] == 0 && b.ShareZone[size_t(v)] < 0;
    }

    // Shares are checked before anything of the zone is made.
    bool checkShares(int32_t zone) {
        ZoneHeader_s &zh = header.Zones[size_t(zone)];
        ZoneBlocks_s &b = blocks[size_t(zone)];
        for (EntIndex_t v = 0; v < EntIndex_t(b.ShareZone.size()); v++) {
            int32_t s = b.ShareZone[size_t(v)];
            if (s < 0 || dataSetVar(v) < 0) continue;
            if (s >= zone || isPlaceholder(s))
                return failf("Variable %d of zone %d is attempting to share with zone %d which has not been loaded.",
                             v + 1, dataSetZone(zone) + 1, dataSetZone(s) + 1);
            if (!ZoneStructuresAreNativeVarShareCompatible(zh.Locations[size_t(v)],
                                                           header.Zones[size_t(s)].Locations[size_t(v)], &zh.Spec,
                                                           &header.Zones[size_t(s)].Spec))
                return failf("Zone %d is attempting to share variable %d from zone %d but they are not compatible "
                             "for sharing.", dataSetZone(zone) + 1, v + 1, dataSetZone(s) + 1);
        }
        int32_t c = b.ConnectivityShare;
        if (c >= 0 && (isPlaceholder(c) ||
                       !ZoneStructuresAreConnectivityShareCompatible(&zh.Spec, &header.Zones[size_t(c)].Spec)))
            return failf("Zone %d is attempting to share connectivity with zone %d which is not compatible for "
                         "sharing.", dataSetZone(zone) + 1, dataSetZone(c) + 1);
        return true;
    }

    // Notes where each stored variable's values lie and moves past them; nothing is read.
    bool locateValues(int32_t zone) {
        ZoneHeader_s &zh = header.Zones[size_t(zone)];
        ZoneBlocks_s &b = blocks[size_t(zone)];
        const ZoneSpec_s &spec = zh.Spec;
        auto numVars = EntIndex_t(b.Types.size());
        b.Offsets.assign(size_t(numVars), -1);
        b.ValueOffsetInPoint.assign(size_t(numVars), 0);
        if (spec.IsBlock) {
            // The blocks follow one another: their offsets are summed, and one seek passes them all.
            int64_t offset = ftello(r.stream->File);
            int64_t start = offset;
            for (EntIndex_t v = 0; v < numVars; v++) {
                if (!isStored(b, v)) continue;
                int64_t bytes = FieldDataGetBytesNeeded(valuesInFile(spec, zh.Locations[size_t(v)], r.version),
                                                        b.Types[size_t(v)]);
                if (offset + bytes > fileSize) return fail("Data file appears to be truncated.");
                b.Offsets[size_t(v)] = offset;
                offset += bytes;
            }
            return seekPast(start, offset - start);
        }
        for (EntIndex_t v = 0; v < numVars; v++) {
            if (!isStored(b, v)) continue;
            if (b.Types[size_t(v)] == FieldDataType_Bit) return fail("Binary datafile corrupted!");
            b.ValueOffsetInPoint[size_t(v)] = b.PointBytes;
            b.PointBytes += LgIndex_t(FieldDataTypeSize(b.Types[size_t(v)]));
            b.NumStored++;
        }
        int64_t start = ftello(r.stream->File);
        for (EntIndex_t v = 0; v < numVars; v++)
            if (isStored(b, v)) b.Offsets[size_t(v)] = start + b.ValueOffsetInPoint[size_t(v)];
        return b.NumStored == 0 || seekPast(start, CalcNumPointValuesNeeded(&spec) * b.PointBytes);
    }

    // The zone's variables in the data set: shared with a loaded zone, or defined over the block
    // (its own, or that of the zone passed over that holds the shared values).
    bool makeVariables(int32_t zone) {
        ZoneHeader_s &zh = header.Zones[size_t(zone)];
        EntIndex_t target = dataSetZone(zone);
        ZoneSpec_s *spec = GetZoneSpec(dataSet, target);
        bool skipping = skipsIndices(zh.Spec);
        for (EntIndex_t v = 0; v < EntIndex_t(zh.Locations.size()); v++) {
            EntIndex_t var = dataSetVar(v);
            if (var < 0) continue;
            int32_t source = zone;
            if (blocks[size_t(zone)].ShareZone[size_t(v)] >= 0) {
                source = shareSource(blocks[size_t(zone)].ShareZone[size_t(v)], v);
                if (blocks[size_t(source)].Loaded) {
                    ShareVariable(dataSet, dataSetZone(source), target, var);
                    continue;
                }
            }
            const ZoneBlocks_s &b = blocks[size_t(source)];
            ValueLocation_e location = zh.Locations[size_t(v)];
            FieldDataType_e type = b.Types[size_t(v)];
            FieldData_a fieldData = FieldDataAlloc();
            if (fieldData == nullptr) return fail("Not enough memory to read the binary datafile.");
            bool ok = true;
            if (b.Passive[size_t(v)] != 0) {
                FieldDataDefineData(fieldData, LgIndex_t(CalcNumValuesNeededAt(spec, location)), type, location);
                FieldDataMakePassive(fieldData);
            } else {
                const ZoneSpec_s &fileSpec = header.Zones[size_t(source)].Spec;
                const LgIndex_t *skip = skipping ? plan.Skip : nullptr;
                if (fileSpec.IsBlock)
                    ok = LoadBinaryBlockVariable(fileName, structureOf(r.version), plan.IsTempOrRemote,
                                                 b.Offsets[size_t(v)], 1, skip, &fileSpec, type,
                                                 r.stream->IsByteOrderNative, location, fieldData);
                else
                    ok = LoadBinaryBlockVariable(fileName, structureOf(r.version), plan.IsTempOrRemote,
                                                 b.Offsets[size_t(v)], b.NumStored, skip, &fileSpec, type,
                                                 r.stream->IsByteOrderNative, location, fieldData, b.PointBytes,
                                                 b.ValueOffsetInPoint[size_t(v)]);
                // The file's range covers every value; a skipped read may hold fewer.
                if (ok && r.version >= 103 && !skipping)
                    FieldDataSetMinMax(fieldData, b.Mins[size_t(v)], b.Maxs[size_t(v)]);
            }
            if (!ok) {
                FieldDataDealloc(&fieldData, true);
                return fail("");
            }
            SetNativeFieldDataPtr(dataSet, target, var, fieldData);
        }
        // Variables of the data set that this file does not supply hold nothing here.
        for (SetIndex_t var = GetNextMember(dataSet->EnabledVars, -1); var >= 0;
             var = GetNextMember(dataSet->EnabledVars, var)) {
            if (GetNativeFieldDataPtr(dataSet, target, EntIndex_t(var)) != nullptr) continue;
            FieldData_a fieldData = FieldDataAlloc();
            if (fieldData == nullptr) return fail("Not enough memory to read the binary datafile.");
            FieldDataDefineData(fieldData, LgIndex_t(CalcNumPointValuesNeeded(spec)), FieldDataType_Float,
                                ValueLocation_Nodal);
            FieldDataMakePassive(fieldData);
            SetNativeFieldDataPtr(dataSet, target, EntIndex_t(var), fieldData);
        }
        return true;
    }

    // Reads count node numbers at the file position into the node map, checking each.
    bool readNodes(const ZoneSpec_s &spec, NodeMap_a nodeMap, int64_t count) {
        if (r.version < 64) {  // integers were floats then
            for (int64_t n = 0; n < count; n++)
                if (!r.readInt(1, MAXINDEX, &nodeMap->Nodes[n])) return fail("Binary datafile corrupted!");
            for (int64_t n = 0; n < count; n++)
                if (--nodeMap->Nodes[n] >= spec.NumPtsI) return fail("Binary datafile corrupted!");
            return true;
        }
        if (fread(nodeMap->Nodes, sizeof(int32_t), size_t(count), r.stream->File) != size_t(count)) {
            ErrMsg("Error reading connectivity list.\nReason: %s", errno != 0 ? strerror(errno) : "Unknown");
            return fail("");
        }
        int32_t base = r.version < 103 ? 1 : 0;
        for (int64_t n = 0; n < count; n++) {
            int32_t node = nodeMap->Nodes[n];
            if (!r.stream->IsByteOrderNative) node = swapped(node);
            if (node < base || node - base >= spec.NumPtsI) return fail("Binary datafile corrupted!");
            nodeMap->Nodes[n] = node - base;
        }
        return true;
    }

    bool readConnectivity(int32_t zone, bool load) {
        ZoneHeader_s &zh = header.Zones[size_t(zone)];
        ZoneBlocks_s &b = blocks[size_t(zone)];
        const ZoneSpec_s &fileSpec = zh.Spec;
        int64_t count = ZoneTypeIsFE(fileSpec.Type) ? int64_t(fileSpec.NumPtsJ) * GetNodesPerElement(fileSpec.Type) : 0;
        if (ZoneTypeIsFE(fileSpec.Type) && b.ConnectivityShare < 0) {
            // The file must hold the node list before memory is set aside for it.
            b.ConnectivityOffset = ftello(r.stream->File);
            if (b.ConnectivityOffset + count * 4 > fileSize) return fail("Data file appears to be truncated.");
            if (count == 0) return failf("Connectivity list is zero length in zone %d", dataSetZone(zone) + 1);
        }
        if (!load) return !ZoneTypeIsFE(fileSpec.Type) || b.ConnectivityShare >= 0 || seekPast(b.ConnectivityOffset, count * 4);

        EntIndex_t target = dataSetZone(zone);
        ZoneSpec_s *spec = GetZoneSpec(dataSet, target);
        // Shared connectivity comes from the first loaded zone along the chain; if the chain ends
        // at a zone passed over, its node list is read from where that zone holds it.
        int32_t source = b.ConnectivityShare;
        while (source >= 0 && !blocks[size_t(source)].Loaded && blocks[size_t(source)].ConnectivityShare >= 0)
            source = blocks[size_t(source)].ConnectivityShare;
        EntIndex_t shareFrom = source >= 0 && blocks[size_t(source)].Loaded ? dataSetZone(source) : -1;
        if (!DataSetAllocConnectivity(dataSet, target, spec, true, shareFrom, false))
            return fail("Not enough memory to read the binary datafile.");
        if (!ZoneTypeIsFE(spec->Type) || shareFrom >= 0) return true;
        NodeMap_a nodeMap = GetZoneData(dataSet, target)->NodeMap;
        if (source < 0) return readNodes(fileSpec, nodeMap, count);
        int64_t here = ftello(r.stream->File);
        return fseeko(r.stream->File, blocks[size_t(source)].ConnectivityOffset, SEEK_SET) == 0 &&
               readNodes(fileSpec, nodeMap, count) && fseeko(r.stream->File, here, SEEK_SET) == 0;
    }

    bool readFaceNeighbors(int32_t zone, bool load) {
        ZoneHeader_s &zh = header.Zones[size_t(zone)];
        const ZoneSpec_s &spec = zh.Spec;
        if (blocks[size_t(zone)].ConnectivityShare >= 0) return true;
        EntIndex_t target = dataSetZone(zone);
        // Connections name cells by their index in the file; with indices skipped they name
        // other cells, so they are passed over.
        bool assign = load && !skipsIndices(spec);
        std::vector<int32_t> raw;
        if (zh.RawFaceNeighborsSupplied) {
            int64_t count = int64_t(spec.NumPtsJ) * GetFacesPerElement(spec.Type, spec.NumPtsI, spec.NumPtsJ, spec.NumPtsK);
            int64_t offset = ftello(r.stream->File);
            if (offset + count * 4 > fileSize) return fail("Data file appears to be truncated.");
            if (!load) {
                if (!seekPast(offset, count * 4)) return false;
            } else {
                raw.resize(size_t(count));
                if (fread(raw.data(), sizeof(int32_t), raw.size(), r.stream->File) != raw.size()) {
                    ErrMsg("Error reading raw face neighbor array list.\nReason: %s",
                           errno != 0 ? strerror(errno) : "Unknown");
                    return fail("");
                }
                for (int32_t &neighbor : raw) {
                    if (!r.stream->IsByteOrderNative) neighbor = swapped(neighbor);
                    if (neighbor < -1 || neighbor >= spec.NumPtsJ)
                        return fail("Corrupt input file: invalid face neighbors.");
                }
            }
        }
        // User-defined connections: records until their neighbours add up to the count.
        FaceNeighborAssignContext_s *context = nullptr;
        if (assign && zh.NumMiscFaceNeighbors > 0) {
            context = FaceNeighborUserDefBeginAssign(dataSet, target);
            if (context == nullptr) return fail("");
        }
        bool global = spec.FNMode == FaceNeighborMode_GlobalOneToOne || spec.FNMode == FaceNeighborMode_GlobalOneToMany;
        bool many = spec.FNMode == FaceNeighborMode_LocalOneToMany || spec.FNMode == FaceNeighborMode_GlobalOneToMany;
        int64_t neighbors = 0;
        bool ok = true;
        while (ok && neighbors < zh.NumMiscFaceNeighbors) {
            int32_t element, face, obscures = 1, count = 1;
            ok = readRaw(r.stream, &element) && readRaw(r.stream, &face) &&
                 (!many || (readRaw(r.stream, &obscures) && readRaw(r.stream, &count)));
            if (!ok) {
                fail("Unexpected end-of-file while reading face neighbor data.");
                break;
            }
            if (count < 1 || count > zh.NumMiscFaceNeighbors - neighbors) {
                ok = fail("Corrupt input file: invalid face neighbors.");
                break;
            }
            std::vector<LgIndex_t> elements(static_cast<size_t>(count));
            std::vector<EntIndex_t> zones(static_cast<size_t>(count), -1);
            for (int32_t n = 0; ok && n < count; n++) {
                int32_t neighborZone = -1;
                ok = (!global || readRaw(r.stream, &neighborZone)) && readRaw(r.stream, &elements[size_t(n)]);
                if (ok && (neighborZone < -1 || neighborZone >= MaxNumZonesOrVars))
                    ok = fail("Corrupt input file: invalid face neighbors.");
                zones[size_t(n)] = neighborZone >= 0 ? dataSetZone(neighborZone) : EntIndex_t(-1);
            }
            if (!ok) {
                fail("Unexpected end-of-file while reading face neighbor data.");
                break;
            }
            if (context != nullptr) {
                ok = FaceNeighborUserDefAssign(context, element, face, obscures != 0, count, elements.data(),
                                               global ? zones.data() : nullptr);
                if (!ok) fail("");
            }
            neighbors += count;
        }
        if (context != nullptr && !FaceNeighborUserDefEndAssign(&context)) ok = false;
        if (!ok) return fail("");
        if (!load) return true;
        GetZoneSpec(dataSet, target)->FNNumBndryConns = assign ? zh.NumMiscFaceNeighbors : 0;
        // The raw array is the neighbours found from the node map, given by the file.
        FaceNeighbor_a faceNeighbor = GetZoneData(dataSet, target)->FN;
        if (!raw.empty() && faceNeighbor != nullptr) {
            if (!FaceNeighborAllocAutoGen(faceNeighbor)) return fail("Not enough memory to read the binary datafile.");
            for (size_t n = 0; n < raw.size(); n++)
                if (faceNeighbor->AutoGen->Neighbors[n] == -1) faceNeighbor->AutoGen->Neighbors[n] = raw[n];
            FaceNeighborUpdateAutoGenBoundaryCount(faceNeighbor, GetZoneData(dataSet, target)->NodeMap);
            ValidateFaceNeighbor(faceNeighbor);
        }
        return true;
    }
};

// Values that remain of n points when every skip-th is kept, and the last one too. Worked in 64
// bits: n - 1 + skip - 1 passes the 32-bit range for a skip near its largest value.
LgIndex_t pointsAfterSkip(LgIndex_t n, LgIndex_t skip) {
    if (n <= 1) return n;
    return LgIndex_t((int64_t(n) - 1 + int64_t(skip) - 1) / int64_t(skip) + 1);
}

// A title joined to the data set's with " | ", cut to the longest title.
void appendTitle(DataSet_s *dataSet, const std::string &title) {
    if (title.empty()) return;
    std::string joined = dataSet->DataSetTitle != nullptr && dataSet->DataSetTitle[0] != '\0'
                             ? std::string(dataSet->DataSetTitle) + " | " + title
                             : title;
    if (joined.size() > size_t(MaxDataSetTitleLength)) joined.resize(size_t(MaxDataSetTitleLength));
    SetDatasetTitle(dataSet, joined.c_str());
}

// Items of source added to *target (made if need be); an item already there takes the new value.
bool mergeAuxData(AuxData_s **target, AuxData_s *source) {
    if (source == nullptr) return true;
    if (*target == nullptr) {
        *target = AuxDataCopy(source, false);
        return *target != nullptr;
    }
    for (LgIndex_t n = 0; n < AuxDataGetNumItems(source); n++) {
        const char *name;
        ArbParam_t value;
        AuxDataType_e type;
        bool retain;
        AuxDataGetItemByIndex(source, n, &name, &value, &type, &retain);
        if (!AuxDataSetItem(*target, name, value, type, retain)) return false;
    }
    return true;
}

}  // namespace

DataFileHeaderInfo_s::~DataFileHeaderInfo_s() {
    for (ZoneSpec_s *&spec : ZoneSpecs) ZoneSpecDealloc(&spec);
}

bool ReadDataFileHeader(const char *fileName, int64_t offset, DataFileHeaderInfo_s *info) {
    OpenedFile_s opened;
    if (!openBinaryFile(fileName, offset, &opened)) return false;
    Reader reader{&opened.Stream, opened.Version};
    Header_s header;
    DataFileExtras_s extras;
    if (!readHeader(reader, &header, &extras)) return reportReaderFailure(reader, "Invalid header in binary datafile");
    info->Version = opened.Version;
    info->Title = header.Title;
    info->VarNames = header.VarNames;
    info->HasText = !extras.Texts.empty();
    info->HasGeoms = !extras.Geoms.empty();
    info->HasCustomLabels = !header.CustomLabels.empty();
    for (ZoneHeader_s &zone : header.Zones) {
        ZoneSpec_s *spec = ZoneSpecAlloc();
        if (spec == nullptr || !CopyZoneSpec(spec, &zone.Spec)) {
            ZoneSpecDealloc(&spec);
            ErrMsg("Out of memory loading binary data file header");
            return false;
        }
        info->ZoneSpecs.push_back(spec);
    }
    return true;
}

bool ReadDataFileIntoDataSet(const char *fileName, DataSet_s *dataSet, const DataFileReadPlan_s &plan,
                             DataFileExtras_s *extras) {
    OpenedFile_s opened;
    if (!openBinaryFile(fileName, plan.Offset, &opened)) return false;
    Reader reader{&opened.Stream, opened.Version};
    Header_s header;
    DataFileExtras_s read;
    if (!readHeader(reader, &header, &read)) return reportReaderFailure(reader, "Invalid header in binary datafile");

    appendTitle(dataSet, header.Title);
    if (extras != nullptr) {
        if (plan.IncludeText) std::move(read.Texts.begin(), read.Texts.end(), std::back_inserter(extras->Texts));
        if (plan.IncludeGeom) std::move(read.Geoms.begin(), read.Geoms.end(), std::back_inserter(extras->Geoms));
        std::move(read.UserRecs.begin(), read.UserRecs.end(), std::back_inserter(extras->UserRecs));
    }
    for (const auto &labels : header.CustomLabels) {
        if (!plan.IncludeCustomLabels || dataSet->NumCustomLabelSets >= MaxCustomLabelSets) break;
        StringList_s *list = StringListAlloc();
        for (const std::string &label : labels) StringListAppendString(list, label.c_str());
        dataSet->CustomLabels[dataSet->NumCustomLabelSets++] = list;
    }
    if (!mergeAuxData(&dataSet->AuxData, header.DataSetAux)) {
        ErrMsg("Out of memory loading binary data file header");
        return false;
    }
    if (!plan.IncludeData || header.Zones.empty()) return true;
    for (size_t v = 0; v < header.VarNames.size(); v++) {
        EntIndex_t var = plan.VarMap != nullptr ? (*plan.VarMap)[v] : EntIndex_t(v);
        if (var < 0 || header.VarAux[v] == nullptr) continue;
        if (!mergeAuxData(&GetVarSpec(dataSet, var)->AuxData, header.VarAux[v])) {
            ErrMsg("Out of memory loading binary data file header");
            return false;
        }
    }

    DataSectionReader data{reader, fileName, opened.Size, dataSet, header, plan, {}};
    data.blocks.resize(header.Zones.size());
    for (size_t z = 0; z < header.Zones.size(); z++) {
        EntIndex_t target = data.dataSetZone(int32_t(z));
        if (target > plan.LastZone) break;
        if (Interrupted) return false;
        ZoneHeader_s &zh = header.Zones[z];
        bool load = !zh.IsPlaceholder && (plan.ZonesToLoad == nullptr || InSet(plan.ZonesToLoad, target));
        if (load) {
            if (dataSet->IsLocked) {
                DataSetShowLockError("add a zone");
                return false;
            }
            // Skipped indices shrink the zone; the file's numbers stay in its header.
            ZoneSpec_s spec;
            bool ok = CopyZoneSpec(&spec, &zh.Spec);
            if (zh.Spec.ParentZone >= 0) spec.ParentZone = EntIndex_t(zh.Spec.ParentZone + plan.ZoneOffset);
            if (ok && data.skipsIndices(zh.Spec)) {
                spec.NumPtsI = pointsAfterSkip(zh.Spec.NumPtsI, plan.Skip[0]);
                spec.NumPtsJ = pointsAfterSkip(zh.Spec.NumPtsJ, plan.Skip[1]);
                spec.NumPtsK = pointsAfterSkip(zh.Spec.NumPtsK, plan.Skip[2]);
                spec.ICellDim = spec.NumPtsI - 1;
                spec.JCellDim = spec.NumPtsJ - 1;
                spec.KCellDim = spec.NumPtsK - 1;
                spec.FNNumBndryConns = 0;
            }
            ok = ok && DataSetAllocZone(dataSet, target) &&
                 DataSetAllocZoneData(dataSet, target, &spec, nullptr, nullptr, nullptr, nullptr, false, -1, false,
                                      false, true, false);
            CleanoutZoneSpec(&spec);
            if (!ok) {
                ErrMsg("Not enough memory to read the binary datafile.");
                return false;
            }
        }
        if (!data.readZone(int32_t(z), load)) return reportReaderFailure(reader, "Binary datafile corrupted!");
    }
    for (size_t z = 0; z < header.Zones.size(); z++) {
        EntIndex_t target = data.dataSetZone(int32_t(z));
        if (data.blocks[z].Loaded && header.Zones[z].NumMiscFaceNeighbors > 0 &&
            !data.skipsIndices(header.Zones[z].Spec) && !VerifyUserDefFNIntegrity(dataSet, target))
            return false;
    }
    return true;
}

void DeleteTrailingDisabledZones(DataSet_s *dataSet) {
    while (dataSet->NumZones > 0 && !IsZoneEnabled(dataSet, EntIndex_t(dataSet->NumZones - 1)))
        DataSetDeleteZone(dataSet, EntIndex_t(dataSet->NumZones - 1));
}

bool ReadBinaryDataFile(const char *fileName, DataSet_s **dataSetOut, DataFileExtras_s *extras) {
    *dataSetOut = nullptr;
    DataFileHeaderInfo_s info;
    if (!ReadDataFileHeader(fileName, 0, &info)) return false;
    DataSetPtr dataSet(AllocDataSet(nullptr, true, true));
    if (!dataSet) return false;
    EntIndex_t numVars = info.ZoneSpecs.empty() ? 0 : EntIndex_t(info.VarNames.size());
    for (EntIndex_t v = 0; v < numVars; v++) {
        if (!DataSetAllocVar(dataSet.get(), v) || !DataSetAllocVarData(dataSet.get(), v, info.VarNames[size_t(v)].c_str())) {
            ErrMsg("Out of space while allocating var names");
            return false;
        }
    }
    DataFileExtras_s localExtras;
    if (!ReadDataFileIntoDataSet(fileName, dataSet.get(), DataFileReadPlan_s{}, extras != nullptr ? extras : &localExtras))
        return false;
    DeleteTrailingDisabledZones(dataSet.get());
    *dataSetOut = dataSet.release();
    return true;
}

// ---- writing ------------------------------------------------------------------------------

namespace {

struct Writer {
    FileStream_s *stream;
    bool ok = true;

    void i32(int32_t value) { ok = ok && writeRaw(stream, value); }
    void f32(float value) { ok = ok && writeRaw(stream, value); }
    void f64(double value) { ok = ok && writeRaw(stream, value); }
    void text(const std::string &value) {
        for (unsigned char c : value) i32(int32_t(c));
        i32(0);
    }
    // Retained items, each behind its record marker (or, inside a zone record, the flag 1).
    void auxItems(const AuxData_s *aux, float marker, int32_t var) {
        struct Context {
            Writer *writer;
            float marker;
            int32_t var;
        } context{this, marker, var};
        AuxDataVisitRetainedItems(aux, [](const char *name, const char *value, void *clientData) {
            auto *c = static_cast<Context *>(clientData);
            if (c->marker != 0.0f) c->writer->f32(c->marker);
            else c->writer->i32(1);
            if (c->var >= 0) c->writer->i32(c->var);
            c->writer->text(name);
            c->writer->i32(0);
            c->writer->text(value);
        }, &context);
    }
};

// A value as the file's type holds it, clipped as the set functions clip.
double clipForType(double value, FieldDataType_e type) {
    switch (type) {
    case FieldDataType_Float:
        if (std::fabs(value) < 1.17549435E-38) return 0.0;
        return std::clamp(value, -3.40282347E38, 3.40282347E38);
    case FieldDataType_Double:
        if (std::fabs(value) < 1.0E-150) return 0.0;
        return std::clamp(value, -1.0E150, 1.0E150);
    default: return value;
    }
}

// Writes a variable's values in its own type, in the stream's byte order.
bool writeValues(Writer &w, FieldData_a fieldData) {
    FieldDataType_e type = fieldData->Type;
    LgIndex_t count = fieldData->NumValues;
    bool plain = fieldData->Data != nullptr && fieldData->IsNativeByteOrder && !fieldData->IsMemMapFragmented;
    if (plain && w.stream->IsByteOrderNative) {
        size_t bytes = size_t(FieldDataGetBytesNeeded(count, type));
        return fwrite(fieldData->Data, 1, bytes, w.stream->File) == bytes;
    }
    if (type == FieldDataType_Bit || type == FieldDataType_Byte) {
        std::vector<unsigned char> bytes(size_t(FieldDataGetBytesNeeded(count, type)), 0);
        for (LgIndex_t n = 0; n < count; n++) {
            double value = GetFieldValue(fieldData, n);
            if (type == FieldDataType_Byte) bytes[size_t(n)] = (unsigned char)std::clamp(value, 0.0, 255.0);
            else if (value >= 1.0) bytes[size_t(n / 8)] |= (unsigned char)(1u << (n % 8));
        }
        return fwrite(bytes.data(), 1, bytes.size(), w.stream->File) == bytes.size();
    }
    for (LgIndex_t n = 0; n < count && w.ok; n++) {
        double value = clipForType(GetFieldValue(fieldData, n), type);
        switch (type) {
        case FieldDataType_Float: w.f32(float(value)); break;
        case FieldDataType_Double: w.f64(value); break;
        case FieldDataType_LongInt: w.i32(int32_t(value)); break;
        case FieldDataType_ShortInt: w.ok = w.ok && writeRaw(w.stream, int16_t(value)); break;
        default: break;
        }
    }
    return w.ok;
}

void writeText(Writer &w, const Text_s &t) {
    w.f32(TextMarker);
    w.i32(coordSysToFile(t.PositionCoordSys));
    w.i32(t.Scope);
    w.f64(t.X), w.f64(t.Y), w.f64(t.Z);
    w.i32(t.Font), w.i32(t.CharHeightUnits);
    w.f64(t.Height);
    w.i32(t.BoxType);
    w.f64(t.BoxMargin), w.f64(t.BoxLineThickness);
    w.i32(t.BoxOutlineColor), w.i32(t.BoxFillColor);
    w.f64(t.Angle), w.f64(t.LineSpacing);
    w.i32(t.Anchor), w.i32(t.Zone), w.i32(t.Color);
    w.text(t.MacroFunctionCommand);
    w.i32(t.Clipping);
    w.text(t.Text);
}

void writeGeom(Writer &w, const Geom_s &g) {
    w.f32(GeomMarker);
    w.i32(coordSysToFile(g.PositionCoordSys));
    w.i32(g.Scope), w.i32(g.DrawOrder);
    w.f64(g.X), w.f64(g.Y), w.f64(g.Z);
    w.i32(g.Zone), w.i32(g.Color), w.i32(g.FillColor), w.i32(g.IsFilled), w.i32(g.GeomType), w.i32(g.LinePattern);
    w.f64(g.PatternLength), w.f64(g.LineThickness);
    w.i32(g.NumEllipsePts), w.i32(g.ArrowheadStyle), w.i32(g.ArrowheadAttachment);
    w.f64(g.ArrowheadSize), w.f64(g.ArrowheadAngle);
    w.text(g.MacroFunctionCommand);
    w.i32(g.DataType), w.i32(g.Clipping);
    auto value = [&](double v) {
        if (g.DataType == FieldDataType_Float) w.f32(float(v));
        else w.f64(v);
    };
    if (g.GeomType != 0) {
        for (double size : g.Sizes) value(size);
        return;
    }
    w.i32(int32_t(g.SegmentX.size()));
    for (size_t s = 0; s < g.SegmentX.size(); s++) {
        w.i32(int32_t(g.SegmentX[s].size()));
        for (double v : g.SegmentX[s]) value(v);
        for (double v : g.SegmentY[s]) value(v);
        if (g.PositionCoordSys == 6)
            for (double v : g.SegmentZ[s]) value(v);
    }
}

// An FE zone's neighbours from the node map go out as the raw array when the system is not to
// work them out itself, so neighbours the user put there survive.
bool writesRawFaceNeighbors(const ZoneSpec_s *spec, const FaceNeighbor_s *faceNeighbor, bool includeAutoGen) {
    return faceNeighbor != nullptr && faceNeighbor->AutoGen != nullptr && ZoneTypeIsFE(spec->Type) &&
           spec->Type != ZoneType_FELineSeg && (includeAutoGen || !spec->AutoAssignFN);
}

// The raw array, then the user-defined connections as records of the zone's mode; zones are
// numbered as written, -1 for the zone itself.
void writeFaceNeighbors(Writer &w, const ZoneSpec_s *spec, const FaceNeighbor_s *faceNeighbor,
                        const std::vector<int32_t> &fileZoneOf, EntIndex_t zone, bool includeAutoGen) {
    if (writesRawFaceNeighbors(spec, faceNeighbor, includeAutoGen))
        for (LgIndex_t n = 0; n < faceNeighbor->AutoGen->NumFaces; n++) w.i32(faceNeighbor->AutoGen->Neighbors[n]);
    const FaceNeighborUserDef_s *user = faceNeighbor->UserDef;
    if (user == nullptr || user->NumNeighbors == 0) return;
    bool global = faceNeighbor->Mode == FaceNeighborMode_GlobalOneToOne || faceNeighbor->Mode == FaceNeighborMode_GlobalOneToMany;
    bool many = faceNeighbor->Mode == FaceNeighborMode_LocalOneToMany || faceNeighbor->Mode == FaceNeighborMode_GlobalOneToMany;
    LgIndex_t numFaces = faceNeighbor->NumElements * faceNeighbor->FacesPerElement;
    for (LgIndex_t f = 0; f < numFaces; f++) {
        LgIndex_t first = user->Offsets[f], count = user->Offsets[f + 1] - first;
        if (count == 0) continue;
        w.i32(f / faceNeighbor->FacesPerElement);
        w.i32(f % faceNeighbor->FacesPerElement);
        if (many) {
            w.i32(user->ObscuringFaces == nullptr || InSet(user->ObscuringFaces, f) ? 1 : 0);
            w.i32(count);
        }
        for (LgIndex_t n = first; n < first + count; n++) {
            if (global) {
                EntIndex_t neighborZone = user->Zones != nullptr ? user->Zones[n] : -1;
                w.i32(neighborZone < 0 || neighborZone == zone ? -1 : fileZoneOf[size_t(neighborZone)]);
            }
            w.i32(user->Elements[n]);
        }
    }
}

// Variables still read from the file being replaced become resident first: after the rename their
// offsets would point into the new file.
bool ConvertVarsDependentOnFileNameToAllocated(const char *fileName, DataSet_s *dataSet) {
    char resolvedTarget[PATH_MAX];
    if (realpath(fileName, resolvedTarget) == nullptr) return true;  // nothing there yet
    for (SetIndex_t z = GetNextMember(dataSet->EnabledZones, -1); z >= 0; z = GetNextMember(dataSet->EnabledZones, z))
        for (SetIndex_t v = GetNextMember(dataSet->EnabledVars, -1); v >= 0; v = GetNextMember(dataSet->EnabledVars, v)) {
            FieldData_a fieldData = GetNativeFieldDataPtr(dataSet, EntIndex_t(z), EntIndex_t(v));
            if (fieldData == nullptr || fieldData->LoadFunction != OrvanexVarLoader) continue;
            auto *info = reinterpret_cast<const OrvanexVarLoadInfo_s *>(fieldData->ClientData);
            char resolved[PATH_MAX];
            if (info == nullptr || realpath(info->FileName, resolved) == nullptr || strcmp(resolved, resolvedTarget) != 0)
                continue;
            if (!FieldDataMakeWritable(fieldData)) return false;
        }
    return true;
}

}  // namespace

bool GoWriteDataSet(DataSet_s *dataSet, const DataFileExtras_s *extras, const char *fileName,
                    const WriteDataSetOptions_s &options) {
    if (!options.Binary) return WriteTextDataSet(dataSet, extras, fileName, options);
    const Set_a *zoneSet = options.Zones != nullptr ? options.Zones : dataSet->EnabledZones;
    const Set_a *varSet = options.Vars != nullptr ? options.Vars : dataSet->EnabledVars;
    // What is written, and the numbers it has in the file.
    std::vector<EntIndex_t> zones, vars;
    std::vector<bool> zoneIsZombie, varIsZombie;
    std::vector<int32_t> fileZoneOf(size_t(dataSet->NumZones), -1);
    for (EntIndex_t z = 0; z < dataSet->NumZones; z++) {
        bool selected = IsZoneEnabled(dataSet, z) && InSet(zoneSet, z);
        if (!selected && !options.IncludeZombies) continue;
        fileZoneOf[size_t(z)] = int32_t(zones.size());
        zones.push_back(z);
        zoneIsZombie.push_back(!selected);
    }
    for (EntIndex_t v = 0; v < dataSet->NumVars; v++) {
        bool selected = IsVarEnabled(dataSet, v) && InSet(varSet, v);
        if (!selected && !options.IncludeZombies) continue;
        vars.push_back(v);
        varIsZombie.push_back(!selected);
    }
    if (zones.empty() && vars.empty()) {
        ErrMsg("Nothing to write out");
        return false;
    }
    if (!ConvertVarsDependentOnFileNameToAllocated(fileName, dataSet)) return false;

    std::string tempName = std::string(fileName) + ".tmpXXXXXX";
    int fd = mkstemp(tempName.data());
    if (fd < 0) {
        ErrMsg("Cannot open file: %s for writing. Bad filename, invalid permissions, or attempt to write to a "
               "directory.", fileName);
        return false;
    }
    FILE *file = fdopen(fd, "wb");
    FileStream_s stream{file, !options.OtherByteOrder};
    Writer w{&stream};
    fwrite("#!QF", 1, 4, file);
    char tag[8];
    snprintf(tag, sizeof(tag), "V%-3d", BinaryFileVersion);
    fwrite(tag, 1, 4, file);
    w.i32(1);
    w.text(dataSet->DataSetTitle != nullptr ? dataSet->DataSetTitle : "");
    w.i32(int32_t(vars.size()));
    for (EntIndex_t v : vars) w.text(GetVarName(dataSet, v) != nullptr ? GetVarName(dataSet, v) : "");

    if (extras != nullptr && options.IncludeText)
        for (const Text_s &t : extras->Texts) writeText(w, t);
    if (extras != nullptr && options.IncludeGeom)
        for (const Geom_s &g : extras->Geoms) writeGeom(w, g);
    for (int16_t s = 0; options.IncludeCustomLabels && s < dataSet->NumCustomLabelSets; s++) {
        w.f32(CustomLabelMarker);
        LgIndex_t count = StringListCount(dataSet->CustomLabels[s]);
        w.i32(count);
        for (LgIndex_t n = 0; n < count; n++) {
            const char *label = StringListGetStringRef(dataSet->CustomLabels[s], n);
            w.text(label != nullptr ? label : "");
        }
    }
    w.auxItems(dataSet->AuxData, DataSetAuxMarker, -1);
    for (size_t n = 0; n < vars.size(); n++)
        if (const VarSpec_s *varSpec = dataSet->VarSpecList != nullptr ? GetVarSpec(dataSet, vars[n]) : nullptr)
            w.auxItems(varSpec->AuxData, VarAuxMarker, int32_t(n));

    for (size_t n = 0; n < zones.size(); n++) {
        w.f32(ZoneMarker);
        if (zoneIsZombie[n]) {
            w.text("ZOMBIE");
            w.i32(-1), w.i32(-1), w.f64(0.0), w.i32(-1);
            for (int k = 0; k < 9; k++) w.i32(0);
            continue;
        }
        const ZoneSpec_s *spec = GetZoneSpec(dataSet, zones[n]);
        w.text(spec->Name != nullptr ? spec->Name : "");
        int32_t parent = spec->ParentZone >= 0 && spec->ParentZone < dataSet->NumZones ? fileZoneOf[size_t(spec->ParentZone)] : -1;
        w.i32(parent);
        w.i32(spec->StrandID);
        w.f64(spec->SolutionTime);
        w.i32(spec->ZoneColor < 0 ? -1 : spec->ZoneColor);
        w.i32(zoneTypeToFile(spec->Type));
        w.i32(0);  // always block
        bool anyCellCentered = false;
        for (size_t v = 0; v < vars.size(); v++) {
            FieldData_a fieldData = varIsZombie[v] ? nullptr : GetNativeFieldDataPtr(dataSet, zones[n], vars[v]);
            anyCellCentered = anyCellCentered || (fieldData != nullptr && fieldData->Location == ValueLocation_CellCentered);
        }
        w.i32(anyCellCentered ? 1 : 0);
        for (size_t v = 0; anyCellCentered && v < vars.size(); v++) {
            FieldData_a fieldData = varIsZombie[v] ? nullptr : GetNativeFieldDataPtr(dataSet, zones[n], vars[v]);
            w.i32(fieldData != nullptr ? locationToFile(fieldData->Location) : 0);
        }
        const FaceNeighbor_s *faceNeighbor = GetZoneData(dataSet, zones[n])->FN;
        w.i32(writesRawFaceNeighbors(spec, faceNeighbor, options.IncludeAutoGenFaceNeighbors) ? 1 : 0);
        LgIndex_t userNeighbors = faceNeighbor != nullptr && faceNeighbor->UserDef != nullptr
                                      ? faceNeighbor->UserDef->NumNeighbors : 0;
        w.i32(userNeighbors);
        if (userNeighbors > 0) {
            w.i32(faceNeighbor->Mode);
            if (spec->Type != ZoneType_Ordered) w.i32(0);  // FEFaceNeighborsComplete
        }
        if (spec->Type == ZoneType_Ordered) {
            w.i32(spec->NumPtsI), w.i32(spec->NumPtsJ), w.i32(spec->NumPtsK);
        } else {
            w.i32(spec->NumPtsI), w.i32(spec->NumPtsJ), w.i32(spec->ICellDim), w.i32(spec->JCellDim),
                w.i32(spec->KCellDim);
        }
        w.auxItems(spec->AuxData, 0.0f, -1);
        w.i32(0);
    }
    w.f32(EndOfHeaderMarker);

    // The data section.
    for (size_t n = 0; n < zones.size() && w.ok; n++) {
        w.f32(ZoneMarker);
        EntIndex_t zone = zones[n];
        std::vector<FieldData_a> fieldData(vars.size(), nullptr);
        std::vector<int32_t> shareTarget(vars.size(), -1);
        bool anyPassive = false, anyShared = false;
        for (size_t v = 0; v < vars.size(); v++) {
            if (zoneIsZombie[n] || varIsZombie[v]) continue;
            fieldData[v] = GetNativeFieldDataPtr(dataSet, zone, vars[v]);
            anyPassive = anyPassive || (fieldData[v] != nullptr && IsFieldDataPassive(fieldData[v]));
            // Shared with the first zone written before this one that holds the very same object.
            if (options.IncludeDataShareLinkage && fieldData[v] != nullptr && fieldData[v]->VarShareRefCount >= 2)
                for (size_t earlier = 0; earlier < n && shareTarget[v] < 0; earlier++)
                    if (!zoneIsZombie[earlier] && GetNativeFieldDataPtr(dataSet, zones[earlier], vars[v]) == fieldData[v])
                        shareTarget[v] = int32_t(earlier);
            anyShared = anyShared || shareTarget[v] >= 0;
        }
        for (size_t v = 0; v < vars.size(); v++)
            w.i32(fieldData[v] != nullptr ? fieldData[v]->Type : FieldDataType_Byte);
        w.i32(anyPassive ? 1 : 0);
        for (size_t v = 0; anyPassive && v < vars.size(); v++)
            w.i32(fieldData[v] != nullptr && IsFieldDataPassive(fieldData[v]) ? 1 : 0);
        w.i32(anyShared ? 1 : 0);
        for (size_t v = 0; anyShared && v < vars.size(); v++) w.i32(shareTarget[v]);
        int32_t connectivityShare = -1;
        const ZoneData_s *zoneData = zoneIsZombie[n] ? nullptr : GetZoneData(dataSet, zone);
        if (options.IncludeDataShareLinkage && zoneData != nullptr && zoneData->NodeMap != nullptr &&
            zoneData->NodeMap->RefCount >= 2)
            for (size_t earlier = 0; earlier < n && connectivityShare < 0; earlier++)
                if (!zoneIsZombie[earlier] && GetZoneData(dataSet, zones[earlier])->NodeMap == zoneData->NodeMap)
                    connectivityShare = int32_t(earlier);
        w.i32(connectivityShare);
        if (zoneIsZombie[n]) continue;
        const ZoneSpec_s *spec = GetZoneSpec(dataSet, zone);
        auto stored = [&](size_t v) {
            return fieldData[v] == nullptr || (!IsFieldDataPassive(fieldData[v]) && shareTarget[v] < 0);
        };
        for (size_t v = 0; v < vars.size(); v++) {
            if (!stored(v)) continue;
            double min = 0.0, max = 0.0;
            if (fieldData[v] != nullptr && !GetNativeVarMinMaxForZoneVar(dataSet, zone, vars[v], true, &min, &max)) {
                ErrMsg("Failed to read variable %d of zone %d from its source.\n", vars[v] + 1, zone + 1);
                w.ok = false;
            }
            w.f64(min), w.f64(max);
        }
        for (size_t v = 0; v < vars.size() && w.ok; v++) {
            if (!stored(v)) continue;
            if (fieldData[v] == nullptr) {  // a zombie variable: zero bytes
                std::vector<unsigned char> zeros(size_t(CalcNumPointValuesNeeded(spec)), 0);
                w.ok = fwrite(zeros.data(), 1, zeros.size(), file) == zeros.size();
                continue;
            }
            FieldData_a readable = GetReadableNativeFieldDataPtr(dataSet, zone, vars[v]);
            if (readable == nullptr) {
                ErrMsg("Failed to read variable %d of zone %d from its source.\n", vars[v] + 1, zone + 1);
                w.ok = false;
            } else if (!writeValues(w, readable)) {
                ErrMsg("Failed to write variable %d of zone %d.\nReason: %s", vars[v] + 1, zone + 1,
                       errno != 0 ? strerror(errno) : "Unknown");
                w.ok = false;
            }
        }
        if (ZoneTypeIsFE(spec->Type) && connectivityShare < 0 && zoneData->NodeMap != nullptr) {
            NodeMap_a nodeMap = zoneData->NodeMap;
            int64_t count = int64_t(nodeMap->NumElements) * nodeMap->NodesPerElement;
            for (int64_t k = 0; k < count; k++) w.i32(nodeMap->Nodes[k]);
        }
        if (connectivityShare < 0 && zoneData->FN != nullptr) writeFaceNeighbors(w, spec, zoneData->FN, fileZoneOf, zone, options.IncludeAutoGenFaceNeighbors);
    }
    bool ok = w.ok && fflush(file) == 0 && ferror(file) == 0;
    ok = (fclose(file) == 0) && ok;
    if (ok && rename(tempName.c_str(), fileName) != 0) {
        ErrMsg("Cannot open file: %s for writing. Bad filename, invalid permissions, or attempt to write to a "
               "directory.", fileName);
        ok = false;
    }
    if (!ok) unlink(tempName.c_str());
    return ok;
}
