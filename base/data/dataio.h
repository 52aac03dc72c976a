// The binary data file: the system's native container for a data set. The reader parses the
// header (title, variables, zone, text, geometry, custom label, user and auxiliary records), then
// walks the data section registering each block of values with its byte offset, so values are
// read only when something asks for them. The writer produces the current version, 108.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "base/data/dataset.h"

constexpr int BinaryFileVersion = 108;

// The message for an ordered zone with some but not all of I, J, K zero.
constexpr const char *BadOrderedZoneDimensionsMessage =
    "Invalid data file: incorrect specifi" "cation of I, J, or K points for ordered data set.";

// A stream and its byte order; every read and write swaps when the order is foreign.
struct FileStream_s {
    FILE *File;
    bool IsByteOrderNative;
};

FileStream_s *FileStreamAlloc(FILE *file, bool isByteOrderNative);
void FileStreamDealloc(FileStream_s **stream);

// The version of the file at the stream's position: "#!QF" and "V%-3d" with a byte-order test, or
// for old files a leading float version. 0 when none can be found. Sets the stream's byte order.
int GetInputVersion(FileStream_s *stream);

// A text record, kept as read until the text subsystem takes it over.
// The defaults are those of a text record that gives nothing but its string.
struct Text_s {
    int32_t PositionCoordSys = 1;  // in memory: 0 grid, 1 frame, 6 grid 3D
    int32_t Scope = 0;
    double X = 0, Y = 0, Z = 0;
    int32_t Font = 1, CharHeightUnits = 1;  // HELV-BOLD, frame units
    double Height = 0.03;                   // fractions of the frame where the units are frame
    int32_t BoxType = 0;
    double BoxMargin = 0.1, BoxLineThickness = 0.004;
    int32_t BoxOutlineColor = 0, BoxFillColor = 7;
    double Angle = 0, LineSpacing = 1;      // radians
    int32_t Anchor = 0, Zone = -1, Color = 0;
    std::string MacroFunctionCommand;
    int32_t Clipping = 0;
    std::string Text;
};

// A geometry record, kept as read until the geometry subsystem takes it over.
struct Geom_s {
    int32_t PositionCoordSys = 0;  // in memory: 0 grid, 1 frame, 6 grid 3D
    int32_t Scope = 0, DrawOrder = 0;
    double X = 0, Y = 0, Z = 0;
    int32_t Zone = -1, Color = 0, FillColor = 0, IsFilled = 0, GeomType = 0, LinePattern = 0;
    double PatternLength = 0.04, LineThickness = 0.001;  // fractions
    int32_t NumEllipsePts = 72, ArrowheadStyle = 0, ArrowheadAttachment = 0;
    double ArrowheadSize = 0.05, ArrowheadAngle = 20;    // a fraction, degrees
    std::string MacroFunctionCommand;
    int32_t DataType = 2;  // FieldDataType_Float or FieldDataType_Double
    int32_t Clipping = 0;
    std::vector<double> Sizes;                      // rectangle, ellipse: X and Y; square, circle: one
    std::vector<std::vector<double>> SegmentX, SegmentY, SegmentZ;  // line segments: per segment, its points
};

// What a data file holds besides the data set itself.
struct DataFileExtras_s {
    std::vector<Text_s> Texts;
    std::vector<Geom_s> Geoms;
    std::vector<std::string> UserRecs;
};

// Reads a whole binary data file into a new data set (values stay on disk until needed). False,
// with the file's message, on any failure; nothing is left allocated then.
bool ReadBinaryDataFile(const char *fileName, DataSet_s **dataSet, DataFileExtras_s *extras);

// What a load needs to know of a file before it reads it: its names and zones.
struct DataFileHeaderInfo_s {
    int Version = 0;
    std::string Title;
    std::vector<std::string> VarNames;
    std::vector<ZoneSpec_s *> ZoneSpecs;  // owned
    bool HasText = false, HasGeoms = false, HasCustomLabels = false;
    DataFileHeaderInfo_s() = default;
    DataFileHeaderInfo_s(const DataFileHeaderInfo_s &) = delete;
    DataFileHeaderInfo_s &operator=(const DataFileHeaderInfo_s &) = delete;
    ~DataFileHeaderInfo_s();
};

// Reads the header of the binary file that begins at offset. False with the file's message.
bool ReadDataFileHeader(const char *fileName, int64_t offset, DataFileHeaderInfo_s *info);

// How one file of a load goes into the data set being built.
struct DataFileReadPlan_s {
    int64_t Offset = 0;                               // where the binary file begins
    const std::vector<EntIndex_t> *VarMap = nullptr;  // by file variable: the data set's, or -1; null: the same
    const Set_a *ZonesToLoad = nullptr;               // data set zone numbers; null: all
    EntIndex_t ZoneOffset = 0;                        // the data set number of the file's first zone
    EntIndex_t LastZone = MaxNumZonesOrVars - 1;      // no zone above this is read
    LgIndex_t Skip[3] = {1, 1, 1};                    // ordered zones keep every n-th index and the last
    bool IncludeText = true, IncludeGeom = true, IncludeCustomLabels = true, IncludeData = true;
    bool IsTempOrRemote = false;                      // values are taken into memory at once
};

// Reads one file into a data set whose variables the caller has made: the title is joined to the
// data set's, labels, auxiliary data, text and geometries are added, and each zone to be read
// takes its number from the plan. A zone that is passed over leaves a gap, as does a placeholder
// zone; a data set variable the file does not supply is passive in the file's zones. False with
// the file's message; zones already added stay for the caller to drop with the data set.
bool ReadDataFileIntoDataSet(const char *fileName, DataSet_s *dataSet, const DataFileReadPlan_s &plan,
                             DataFileExtras_s *extras);
// Deletes the disabled zones at the end of the zone list.
void DeleteTrailingDisabledZones(DataSet_s *dataSet);

struct WriteDataSetOptions_s {
    const Set_a *Zones = nullptr;  // null: all enabled
    const Set_a *Vars = nullptr;   // null: all enabled
    bool IncludeText = true, IncludeGeom = true, IncludeCustomLabels = true, IncludeData = true;
    bool IncludeDataShareLinkage = true;
    bool IncludeAutoGenFaceNeighbors = false;  // FE neighbours from the node map as the raw array
    bool IncludeZombies = false;
    bool OtherByteOrder = false;  // write for a machine of the other byte order
    bool Binary = true;           // false: the text format
    bool UsePointFormat = false;  // text: values point by point
    int Precision = 12;           // text: significant digits, at most 50
};

// Writes the data set as a version-108 binary file (or, with Binary false, as a text data file). The file is written under a temporary name in
// the same directory and renamed over the target only when complete, so a failure leaves the old
// file as it was.
bool GoWriteDataSet(DataSet_s *dataSet, const DataFileExtras_s *extras, const char *fileName,
                    const WriteDataSetOptions_s &options);
