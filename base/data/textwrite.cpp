// The text writer. Numbers are printed with "%.*G" at the caller's precision, one blank apart,
// 80 / (precision + 5) to a line; zone and variable numbers in the file are one-based, as the
// converter reads them. Cell-centred values of ordered zones are written for the real cells only:
// the ghost slots of the in-memory layout are not values.
#include "base/data/textwrite.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>
#include <unistd.h>

#include "base/data/datautil.h"
#include "base/data/face.h"
#include "base/kernel/auxdata.h"
#include "base/kernel/errors.h"
#include "base/kernel/strlist.h"

namespace {

struct FileCloser {
    void operator()(FILE *file) const { fclose(file); }
};

const char *zoneTypeName(ZoneType_e type) {
    switch (type) {
    case ZoneType_FETriangle: return "FETriangle";
    case ZoneType_FEQuad: return "FEQuadrilateral";
    case ZoneType_FETetra: return "FETetrahedron";
    case ZoneType_FEBrick: return "FEBrick";
    case ZoneType_FELineSeg: return "FELineSeg";
    default: return "Ordered";
    }
}

const char *typeName(FieldDataType_e type) {
    switch (type) {
    case FieldDataType_Double: return "DOUBLE ";
    case FieldDataType_LongInt: return "LONGINT ";
    case FieldDataType_ShortInt: return "SHORTINT ";
    case FieldDataType_Byte: return "BYTE ";
    case FieldDataType_Bit: return "BIT ";
    default: return "SINGLE ";
    }
}

// A quoted string of the text format: a double quote or a backslash gets a backslash in front.
std::string quoted(const char *text) {
    std::string out = "\"";
    for (const char *c = text != nullptr ? text : ""; *c; c++) {
        if (*c == '"' || *c == '\\') out.push_back('\\');
        out.push_back(*c);
    }
    return out + "\"";
}

// Colours 0 to 7 by name, the custom ones as CUSTn.
std::string colorName(int32_t color) {
    static const char *const names[] = {"BLACK", "RED", "GREEN", "BLUE", "CYAN", "YELLOW", "PURPLE", "WHITE"};
    if (color >= 0 && color < 8) return names[color];
    return "CUST" + std::to_string(color - 7);
}

const char *coordSysName(int32_t coordSys) { return coordSys == 0 ? "GRID" : coordSys == 6 ? "GRID3D" : "FRAME"; }

constexpr double DegreesPerRadian = 57.29577951308232;

// Text records go back in the converter's units: frame positions, heights, margins and line
// thickness in percent, angles in degrees.
void writeTextRecord(FILE *f, const Text_s &t) {
    static const char *const anchors[] = {"LEFT", "CENTER", "RIGHT", "MIDLEFT", "MIDCENTER", "MIDRIGHT",
                                          "HEADLEFT", "HEADCENTER", "HEADRIGHT"};
    static const char *const units[] = {"GRID", "FRAME", "POINT"};
    static const char *const boxes[] = {"NOBOX", "FILLED", "HOLLOW"};
    static const char *const fonts[] = {"HELV", "HELV-BOLD", "GREEK", "MATH", "USER-DEF", "TIMES", "TIMES-ITALIC",
                                        "TIMES-BOLD", "TIMES-ITALIC-BOLD", "COURIER", "COURIER-BOLD"};
    double position = t.PositionCoordSys == 1 ? 100.0 : 1.0;
    fprintf(f, "TEXT\nCS=%s X=%.12G Y=%.12G", coordSysName(t.PositionCoordSys), t.X * position, t.Y * position);
    if (t.PositionCoordSys == 6) fprintf(f, " Z=%.12G", t.Z);
    fprintf(f, " S=%s AN=%s HU=%s H=%.12G", t.Scope ? "LOCAL" : "GLOBAL", anchors[std::clamp(t.Anchor, 0, 8)],
            units[std::clamp(t.CharHeightUnits, 0, 2)], t.CharHeightUnits == 1 ? t.Height * 100.0 : t.Height);
    fprintf(f, " LT=%.12G LS=%.12G A=%.12G", t.BoxLineThickness * 100.0, t.LineSpacing, t.Angle * DegreesPerRadian);
    if (t.Zone >= 0) fprintf(f, " ZN=%d", t.Zone + 1);
    fprintf(f, " BX=%s BXF=%s BXO=%s BXM=%.12G", boxes[std::clamp(t.BoxType, 0, 2)], colorName(t.BoxFillColor).c_str(),
            colorName(t.BoxOutlineColor).c_str(), t.BoxMargin * 100.0);
    fprintf(f, " F=%s C=%s CLIPPING=%s", fonts[std::clamp(t.Font, 0, 10)], colorName(t.Color).c_str(),
            t.Clipping ? "CLIPTOFRAME" : "CLIPTOAXES");
    if (!t.MacroFunctionCommand.empty()) fprintf(f, " MFC=%s", quoted(t.MacroFunctionCommand.c_str()).c_str());
    fprintf(f, "\nT=%s\n", quoted(t.Text.c_str()).c_str());
}

// Geometry records likewise; line points go out a point to a line.
void writeGeomRecord(FILE *f, const Geom_s &g) {
    static const char *const patterns[] = {"SOLID", "DASHED", "DASHDOT", "DOTTED", "LONGDASH", "DASHDOTDOT"};
    static const char *const styles[] = {"PLAIN", "FILLED", "HOLLOW"};
    static const char *const attachments[] = {"NONE", "BEGINNING", "END", "BOTH"};
    static const char *const types[] = {"LINE", "RECTANGLE", "SQUARE", "CIRCLE", "ELLIPSE"};
    double scale = g.PositionCoordSys == 1 ? 100.0 : 1.0;
    fprintf(f, "GEOMETRY\nF=POINT CS=%s X=%.12G Y=%.12G", coordSysName(g.PositionCoordSys), g.X * scale, g.Y * scale);
    if (g.PositionCoordSys == 6) fprintf(f, " Z=%.12G", g.Z);
    fprintf(f, " S=%s DRAWORDER=%s", g.Scope ? "LOCAL" : "GLOBAL", g.DrawOrder ? "BEFOREDATA" : "AFTERDATA");
    if (g.Zone >= 0) fprintf(f, " ZN=%d", g.Zone + 1);
    fprintf(f, " C=%s", colorName(g.Color).c_str());
    if (g.IsFilled) fprintf(f, " FC=%s", colorName(g.FillColor).c_str());
    fprintf(f, " T=%s L=%s PL=%.12G LT=%.12G EP=%d", types[std::clamp(g.GeomType, 0, 4)],
            patterns[std::clamp(g.LinePattern, 0, 5)], g.PatternLength * 100.0, g.LineThickness * 100.0,
            g.NumEllipsePts);
    fprintf(f, " AST=%s AAT=%s ASZ=%.12G AAN=%.12G DT=%s CLIPPING=%s", styles[std::clamp(g.ArrowheadStyle, 0, 2)],
            attachments[std::clamp(g.ArrowheadAttachment, 0, 3)], g.ArrowheadSize * 100.0, g.ArrowheadAngle,
            g.DataType == FieldDataType_Double ? "DOUBLE" : "SINGLE", g.Clipping ? "CLIPTOFRAME" : "CLIPTOAXES");
    if (!g.MacroFunctionCommand.empty()) fprintf(f, " MFC=%s", quoted(g.MacroFunctionCommand.c_str()).c_str());
    fputc('\n', f);
    if (g.GeomType != 0) {
        for (double size : g.Sizes) fprintf(f, "%.12G\n", size * scale);
        return;
    }
    fprintf(f, "%d\n", int(g.SegmentX.size()));
    for (size_t s = 0; s < g.SegmentX.size(); s++) {
        fprintf(f, "%d\n", int(g.SegmentX[s].size()));
        for (size_t p = 0; p < g.SegmentX[s].size(); p++) {
            fprintf(f, "%.12G %.12G", g.SegmentX[s][p] * scale, g.SegmentY[s][p] * scale);
            if (g.PositionCoordSys == 6) fprintf(f, " %.12G", g.SegmentZ[s][p]);
            fputc('\n', f);
        }
    }
}

// User-defined face neighbours as tuples of the zone's mode, one a line, all one-based: element 0
// is a boundary and zone 0 the zone itself.
void writeFaceNeighborTuples(FILE *f, const FaceNeighbor_s *faceNeighbor, const std::vector<int> &fileZoneOf,
                             EntIndex_t zone) {
    const FaceNeighborUserDef_s *user = faceNeighbor->UserDef;
    bool global = faceNeighbor->Mode == FaceNeighborMode_GlobalOneToOne || faceNeighbor->Mode == FaceNeighborMode_GlobalOneToMany;
    bool many = faceNeighbor->Mode == FaceNeighborMode_LocalOneToMany || faceNeighbor->Mode == FaceNeighborMode_GlobalOneToMany;
    LgIndex_t numFaces = faceNeighbor->NumElements * faceNeighbor->FacesPerElement;
    for (LgIndex_t face = 0; face < numFaces; face++) {
        LgIndex_t first = user->Offsets[face], count = user->Offsets[face + 1] - first;
        if (count == 0) continue;
        fprintf(f, "%d %d", face / faceNeighbor->FacesPerElement + 1, face % faceNeighbor->FacesPerElement + 1);
        if (many) fprintf(f, " %d %d", user->ObscuringFaces == nullptr || InSet(user->ObscuringFaces, face) ? 1 : 0, count);
        for (LgIndex_t n = first; n < first + count; n++) {
            if (global) {
                EntIndex_t neighborZone = user->Zones != nullptr ? user->Zones[n] : -1;
                fprintf(f, " %d", neighborZone < 0 || neighborZone == zone ? 0 : fileZoneOf[size_t(neighborZone)]);
            }
            fprintf(f, " %d", user->Elements[n] + 1);
        }
        fputc('\n', f);
    }
}

// "[1,3,4]": one-based members.
std::string setText(const std::vector<int> &members) {
    std::string out = "[";
    for (size_t n = 0; n < members.size(); n++) out += (n ? "," : "") + std::to_string(members[n]);
    return out + "]";
}

// Values a line at a time.
class ValueWriter {
  public:
    ValueWriter(FILE *file, int precision) : file_(file), precision_(precision), perLine_(std::max(80 / (precision + 5), 1)) {}
    void value(double v) {
        fprintf(file_, column_ == 0 ? "%.*G" : " %.*G", precision_, v);
        if (++column_ == perLine_) endLine();
    }
    void endLine() {
        if (column_ > 0) fputc('\n', file_);
        column_ = 0;
    }

  private:
    FILE *file_;
    int precision_, perLine_, column_ = 0;
};

void writeAux(FILE *file, const AuxData_s *aux, const char *prefix) {
    struct Context {
        FILE *file;
        const char *prefix;
    } context{file, prefix};
    AuxDataVisitRetainedItems(aux, [](const char *name, const char *value, void *clientData) {
        auto *c = static_cast<Context *>(clientData);
        fprintf(c->file, "%s%s=%s\n", c->prefix, name, quoted(value).c_str());
    }, &context);
}

// The values of a variable that the file holds: ordered cell-centred ones skip the ghost slots.
void writeBlock(ValueWriter &out, const ZoneSpec_s *spec, FieldData_a fieldData) {
    if (ZoneTypeIsFE(spec->Type) || fieldData->Location == ValueLocation_Nodal) {
        for (LgIndex_t n = 0; n < fieldData->NumValues; n++) out.value(GetFieldValue(fieldData, n));
    } else {
        LgIndex_t ci = std::max(spec->NumPtsI - 1, 1), cj = std::max(spec->NumPtsJ - 1, 1),
                  ck = std::max(spec->NumPtsK - 1, 1);
        for (LgIndex_t k = 0; k < ck; k++)
            for (LgIndex_t j = 0; j < cj; j++)
                for (LgIndex_t i = 0; i < ci; i++)
                    out.value(GetFieldValue(fieldData, LgIndex_t(i + int64_t(j) * spec->NumPtsI +
                                                                  int64_t(k) * spec->NumPtsI * spec->NumPtsJ)));
    }
    out.endLine();
}

}  // namespace

bool WriteTextDataSet(DataSet_s *dataSet, const DataFileExtras_s *extras, const char *fileName,
                      const WriteDataSetOptions_s &options) {
    if (options.Precision < 1 || options.Precision > 50) {
        ErrMsg("Invalid ASCII precision value in data set write");
        return false;
    }
    const Set_a *zoneSet = options.Zones != nullptr ? options.Zones : dataSet->EnabledZones;
    const Set_a *varSet = options.Vars != nullptr ? options.Vars : dataSet->EnabledVars;
    std::vector<EntIndex_t> zones, vars;
    std::vector<bool> zombie;
    std::vector<int> fileZoneOf(size_t(dataSet->NumZones), -1);
    for (EntIndex_t z = 0; z < dataSet->NumZones; z++) {
        bool selected = IsZoneEnabled(dataSet, z) && InSet(zoneSet, z);
        if (!selected && !options.IncludeZombies) continue;
        fileZoneOf[size_t(z)] = int(zones.size()) + 1;
        zones.push_back(z);
        zombie.push_back(!selected);
    }
    for (EntIndex_t v = 0; v < dataSet->NumVars; v++)
        if (IsVarEnabled(dataSet, v) && InSet(varSet, v)) vars.push_back(v);
    if (zones.empty() && vars.empty()) {
        ErrMsg("Nothing to write out");
        return false;
    }
    if (options.UsePointFormat)
        for (EntIndex_t zone : zones)
            for (EntIndex_t v : vars)
                if (FieldData_a fd = IsZoneEnabled(dataSet, zone) ? GetNativeFieldDataPtr(dataSet, zone, v) : nullptr)
                    if (fd->Location == ValueLocation_CellCentered) {
                        ErrMsg("Cell centered variables may only be output in block format.");
                        return false;
                    }

    std::string tempName = std::string(fileName) + ".tmpXXXXXX";
    int fd = mkstemp(tempName.data());
    if (fd < 0) {
        ErrMsg("Cannot open file: %s for writing. Bad filename, invalid permissions, or attempt to write to a "
               "directory.", fileName);
        return false;
    }
    std::unique_ptr<FILE, FileCloser> file(fdopen(fd, "w"));
    FILE *f = file.get();
    bool ok = true;
    bool wroteBit = false;
    if (dataSet->DataSetTitle != nullptr && dataSet->DataSetTitle[0] != '\0')
        fprintf(f, "TITLE     = %s\n", quoted(dataSet->DataSetTitle).c_str());
    fprintf(f, "VARIABLES = ");
    for (size_t n = 0; n < vars.size(); n++) fprintf(f, "%s\n", quoted(GetVarName(dataSet, vars[n])).c_str());
    if (extras != nullptr && options.IncludeText)
        for (const Text_s &text : extras->Texts) writeTextRecord(f, text);
    if (extras != nullptr && options.IncludeGeom)
        for (const Geom_s &geom : extras->Geoms) writeGeomRecord(f, geom);
    for (int16_t s = 0; options.IncludeCustomLabels && s < dataSet->NumCustomLabelSets; s++) {
        fprintf(f, "CUSTOMLABELS\n");
        for (LgIndex_t n = 0; n < StringListCount(dataSet->CustomLabels[s]); n++)
            fprintf(f, "%s\n", quoted(StringListGetStringRef(dataSet->CustomLabels[s], n)).c_str());
    }
    writeAux(f, dataSet->AuxData, "DATASETAUXDATA ");
    for (size_t n = 0; n < vars.size(); n++)
        if (const VarSpec_s *varSpec = dataSet->VarSpecList != nullptr ? GetVarSpec(dataSet, vars[n]) : nullptr) {
            std::string prefix = "VARAUXDATA " + std::to_string(n + 1) + " ";
            writeAux(f, varSpec->AuxData, prefix.c_str());
        }

    for (size_t zn = 0; zn < zones.size() && ok; zn++) {
        if (zombie[zn]) {
            fprintf(f, "ZONE T=ZOMBIE I=0 J=0 K=0 F=BLOCK\n");
            continue;
        }
        EntIndex_t zone = zones[zn];
        const ZoneSpec_s *spec = GetZoneSpec(dataSet, zone);
        const ZoneData_s *zoneData = GetZoneData(dataSet, zone);
        fprintf(f, "ZONE T=%s\n", quoted(spec->Name).c_str());
        if (spec->ParentZone >= 0 && fileZoneOf[size_t(spec->ParentZone)] > 0)
            fprintf(f, " PARENTZONE=%d\n", fileZoneOf[size_t(spec->ParentZone)]);
        fprintf(f, " STRANDID=%d, SOLUTIONTIME=%.*lG\n", spec->StrandID >= 0 ? spec->StrandID + 1 : 0,
                options.Precision, spec->SolutionTime);
        if (ZoneTypeIsFE(spec->Type))
            fprintf(f, " N=%d, E=%d,", spec->NumPtsI, spec->NumPtsJ);
        else
            fprintf(f, " I=%d, J=%d, K=%d,", spec->NumPtsI, spec->NumPtsJ, spec->NumPtsK);
        fprintf(f, " ZONETYPE=%s\n", zoneTypeName(spec->Type));
        fprintf(f, options.UsePointFormat ? " DATAPACKING=POINT\n" : " DATAPACKING=BLOCK\n");
        // Sharing with zones written before this one, and what the values are.
        std::vector<FieldData_a> values(vars.size(), nullptr);
        std::vector<int> cellCentered, passive;
        std::vector<std::pair<int, int>> shared;  // (variable, zone), one-based
        for (size_t n = 0; n < vars.size(); n++) {
            values[n] = GetNativeFieldDataPtr(dataSet, zone, vars[n]);
            if (values[n] == nullptr) continue;
            if (values[n]->Location == ValueLocation_CellCentered) cellCentered.push_back(int(n) + 1);
            if (IsFieldDataPassive(values[n])) passive.push_back(int(n) + 1);
            if (options.IncludeDataShareLinkage && values[n]->VarShareRefCount >= 2)
                for (size_t earlier = 0; earlier < zn; earlier++)
                    if (!zombie[earlier] && GetNativeFieldDataPtr(dataSet, zones[earlier], vars[n]) == values[n]) {
                        shared.emplace_back(int(n) + 1, int(earlier) + 1);
                        break;
                    }
        }
        if (!cellCentered.empty()) fprintf(f, " VARLOCATION=(%s=CELLCENTERED)\n", setText(cellCentered).c_str());
        const FaceNeighbor_s *faceNeighbor = zoneData->FN;
        LgIndex_t userNeighbors =
            faceNeighbor != nullptr && faceNeighbor->UserDef != nullptr ? faceNeighbor->UserDef->NumNeighbors : 0;
        if (userNeighbors > 0) {
            static const char *const modes[] = {"LOCALONETOONE", "LOCALONETOMANY", "GLOBALONETOONE", "GLOBALONETOMANY"};
            fprintf(f, " FACENEIGHBORCONNECTIONS=%d\n FACENEIGHBORMODE=%s\n", userNeighbors,
                    modes[std::clamp(int(faceNeighbor->Mode), 0, 3)]);
            if (ZoneTypeIsFE(spec->Type) && !spec->AutoAssignFN) fprintf(f, " FEFACENEIGHBORSCOMPLETE=YES\n");
        }
        writeAux(f, spec->AuxData, " AUXDATA ");
        fprintf(f, " DT=(");
        for (FieldData_a value : values) {
            fputs(typeName(value != nullptr ? value->Type : FieldDataType_Float), f);
            wroteBit = wroteBit || (value != nullptr && value->Type == FieldDataType_Bit);
        }
        fprintf(f, ")\n");
        if (!passive.empty()) fprintf(f, " PASSIVEVARLIST=%s\n", setText(passive).c_str());
        if (!shared.empty()) {
            fprintf(f, " VARSHARELIST = (");
            for (size_t n = 0; n < shared.size(); n++)
                fprintf(f, "%s[%d]=%d", n ? ", " : "", shared[n].first, shared[n].second);
            fprintf(f, ")\n");
        }
        int connectivityShare = 0;
        if (options.IncludeDataShareLinkage && zoneData->NodeMap != nullptr && zoneData->NodeMap->RefCount >= 2)
            for (size_t earlier = 0; earlier < zn && connectivityShare == 0; earlier++)
                if (!zombie[earlier] && GetZoneData(dataSet, zones[earlier])->NodeMap == zoneData->NodeMap)
                    connectivityShare = int(earlier) + 1;
        if (connectivityShare > 0) fprintf(f, " CONNECTIVITYSHAREZONE = %d\n", connectivityShare);

        auto written = [&](size_t n) {
            if (values[n] == nullptr || IsFieldDataPassive(values[n])) return false;
            for (const auto &share : shared)
                if (share.first == int(n) + 1) return false;
            return true;
        };
        ValueWriter out(f, options.Precision);
        std::vector<FieldData_a> readable(vars.size(), nullptr);
        for (size_t n = 0; n < vars.size() && ok; n++)
            if (written(n)) {
                readable[n] = GetReadableNativeFieldDataPtr(dataSet, zone, vars[n]);
                if (readable[n] == nullptr) {
                    ErrMsg("Failed to read variable %d of zone %d from its source.\n", vars[n] + 1, zone + 1);
                    ok = false;
                }
            }
        if (!ok) break;
        if (options.UsePointFormat) {
            LgIndex_t points = ZoneGetNumPoints(dataSet, zone);
            for (LgIndex_t p = 0; p < points; p++) {
                for (size_t n = 0; n < vars.size(); n++)
                    if (readable[n] != nullptr) out.value(GetFieldValue(readable[n], p));
                out.endLine();
            }
        } else {
            for (size_t n = 0; n < vars.size(); n++)
                if (readable[n] != nullptr) writeBlock(out, spec, readable[n]);
        }
        if (ZoneTypeIsFE(spec->Type) && connectivityShare == 0 && zoneData->NodeMap != nullptr) {
            NodeMap_a nodeMap = zoneData->NodeMap;
            for (LgIndex_t e = 0; e < nodeMap->NumElements; e++) {
                for (int c = 0; c < nodeMap->NodesPerElement; c++)
                    fprintf(f, c ? " %d" : "%d", NodeMapGetNode(nodeMap, e, c) + 1);
                fputc('\n', f);
            }
        }
        if (userNeighbors > 0 && connectivityShare == 0) writeFaceNeighborTuples(f, faceNeighbor, fileZoneOf, zone);
    }
    ok = ok && fflush(f) == 0 && ferror(f) == 0;
    file.reset();
    if (ok && rename(tempName.c_str(), fileName) != 0) ok = false;
    if (!ok) {
        unlink(tempName.c_str());
        return false;
    }
    if (wroteBit && options.UsePointFormat)
        Warning("An ASCII file in POINT format was written with one or more variables with a datatype of BIT. This "
                "file cannot be read back in to Orvanex. You must use BLOCK format when BIT data types are used if "
                "you want to be able to read the file back into Orvanex.");
    return true;
}
