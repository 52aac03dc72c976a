// The data load flow: every load (command line, macro, layout, add-on) ends in Action_ReadDataSet.
// It finds a reader by name, turns text files into temporary binary files, reads all headers,
// checks the load against the data set already in the frame, builds a new data set from the
// files and gives it to the frame. A load either attaches the new data or leaves the frame as it
// was.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "base/data/zonespec.h"
#include "base/kernel/types.h"
#include "base/plot/frame.h"

struct Set_a;
struct StringList_s;

// The key of the built-in reader, and the name users see for it.
extern const char *const OrvanexBaseDataSetReaderName;  // "ORVANEX"
extern const char *const OrvanexDataLoaderName;         // "Orvanex Data Loader"
extern const char *const OrvanexPackageDataSetReaderName;

enum VarLoadMode_e : int16_t { VarLoadMode_ByName = 0, VarLoadMode_ByPosition = 1 };

struct IJKSkip_s {
    LgIndex_t I = 1, J = 1, K = 1;
};

// A converter writes a binary file from the named file; a loader builds the data set itself.
using DataSetConverter_pf = bool (*)(const char *fileName, const char *tempFileName, char **errorText);
using DataSetLoader_pf = bool (*)(StringList_s *instructions);
using DataSetPostRead_pf = void (*)(bool isReadOk);
using DataSetLoaderSelection_pf = void (*)();
using DataSetInstructionOverride_pf = bool (*)(StringList_s *instructions);

enum DataSetReaderKind_e : int32_t { DataSetReaderKind_BuiltIn = 0, DataSetReaderKind_AddOn = 1 };

struct DataSetReader_s {
    DataSetConverter_pf Converter = nullptr;
    DataSetPostRead_pf PostRead = nullptr;
    DataSetLoader_pf Loader = nullptr;
    DataSetLoaderSelection_pf LoaderSelectionCallback = nullptr;
    DataSetInstructionOverride_pf InstructionOverride = nullptr;
    std::string Name;       // compared without regard to case
    std::string Extension;
    std::vector<std::string> LastFileNames;
    DataSetReaderKind_e ReaderKind = DataSetReaderKind_BuiltIn;
};

constexpr int MaxDataSetReaders = 100;
extern DataSetReader_s DataSetReaders[MaxDataSetReaders];
extern int NumDataSetReaders;

// Registers the two built-in readers (at start-up).
void RegisterBuiltInDataSetReaders();
bool RegisterDataSetReader(DataSetConverter_pf converter, DataSetLoader_pf loader, const char *name,
                           DataSetLoaderSelection_pf selectionCallback,
                           DataSetInstructionOverride_pf instructionOverride, const char *extension,
                           DataSetReaderKind_e kind);
// The row of the reader, or -1 with "Unknown DataSet Reader: %-30s".
int GetDataSetReaderByName(const char *name);
void MopupDataSetReaders();

// One file of a load.
struct DataFileInfo_s {
    std::string FileName;
    std::string TempFileName;  // empty if the file is binary already
    int64_t Offset = 0;        // where the binary file begins
    std::vector<std::string> VarNames;
    EntIndex_t NumZones = 0;
    EntIndex_t NumVars = 0;
};

struct SetDeleter_s {
    void operator()(Set_a *set) const;
};
using SetPtr_t = std::unique_ptr<Set_a, SetDeleter_s>;

struct ZoneSpecDeleter_s {
    void operator()(ZoneSpec_s *spec) const { ZoneSpecDealloc(&spec); }
};
using ZoneSpecList_t = std::vector<std::unique_ptr<ZoneSpec_s, ZoneSpecDeleter_s>>;

// Everything a load knows before it reads. Destroying it deletes the temporary binary files.
struct DataSetLoadInfo_s {
    int16_t Reader = -1;
    std::vector<std::string> FileNamesOrInstructions;
    std::vector<DataFileInfo_s> FileList;
    VarLoadMode_e VarLoadMode = VarLoadMode_ByPosition;
    bool HasText = true, HasGeoms = true, HasCustomLabels = true, HasData = true;
    bool CollapseZonesAndVars = false;
    bool AssignStrandIDs = true;
    bool AddZonesToExistingStrands = false;
    SetPtr_t VarsToLoad;   // positions to load, or null
    SetPtr_t ZonesToLoad;  // zones to load, or null for all
    IJKSkip_s IJKSkip;

    DataSetLoadInfo_s() = default;
    DataSetLoadInfo_s(const DataSetLoadInfo_s &) = delete;
    DataSetLoadInfo_s &operator=(const DataSetLoadInfo_s &) = delete;
    ~DataSetLoadInfo_s();
};

void CleanupDataSetLoadInfo(DataSetLoadInfo_s *loadInfo);

// The arguments of a load, with the defaults of $!READDATASET.
struct ReadDataSetArgs_s {
    ReadDataOption_e ReadDataOption = ReadDataOption_New;
    bool ResetStyle = true;
    std::vector<std::string> FileNamesOrInstructions;  // an entry may hold several names, one per line
    std::string DataSetReader = OrvanexBaseDataSetReaderName;
    PlotType_e InitialPlotType = PlotType_Automatic;
    bool IncludeText = true, IncludeGeom = true, IncludeCustomLabels = true, IncludeData = true;
    bool CollapseZonesAndVars = false;
    bool AssignStrandIDs = true;
    bool AddZonesToExistingStrands = false;
    const Set_a *ZonesToLoad = nullptr;
    bool InitialPlotFirstZoneOnly = false;
    VarLoadMode_e VarLoadMode = VarLoadMode_ByPosition;
    const Set_a *VarPositionList = nullptr;
    const StringList_s *VarNameList = nullptr;  // an entry may be an alias list: names one per line
    IJKSkip_s IJKSkip;
    bool IsInteractive = false;
};

// Fills the defaults that the configuration decides (variable load mode, strand assignment).
void InitReadDataSetArgs(ReadDataSetArgs_s *args);

bool Action_ReadDataSet(const ReadDataSetArgs_s &args);
// Sets up the file list and temporary binary files and reads every header: what a dialog shows
// before the load. offsets may be null (all 0).
bool PrepareToLoadBinaryDatafiles(int reader, const std::vector<std::string> &fileNames,
                                  const std::vector<int64_t> *offsets, DataSetLoadInfo_s *loadInfo,
                                  ZoneSpecList_t *zoneSpecs, EntIndex_t *numZones);
bool SetupDataSetFileNameList(const std::vector<std::string> &fileNames, const std::vector<int64_t> *offsets,
                              std::vector<DataFileInfo_s> *fileList, int reader);
bool InsertTempBinaryFileNames(std::vector<DataFileInfo_s> *fileList, int reader);
bool Action_ReadCookedDataSet(DataSetLoadInfo_s *loadInfo, const ZoneSpecList_t &zoneSpecs,
                              const StringList_s *varNameList, ReadDataOption_e option, bool resetStyle,
                              PlotType_e initialPlotType, bool initialPlotFirstZoneOnly, bool isPostProcess,
                              bool offerInitialPlot);
bool GoReadDataSet(DataSetLoadInfo_s *loadInfo, const ZoneSpecList_t &zoneSpecs, const StringList_s *varNameList,
                   ReadDataOption_e option, bool resetStyle, PlotType_e initialPlotType,
                   bool initialPlotFirstZoneOnly);
// The name list a load uses when none is given; allMatched is false when by name some name of the
// first file is missing from another. Null when no file has zones.
StringList_s *InitializeVarNameListFromLoadInfo(DataSetLoadInfo_s *loadInfo, bool *allMatched);
void DataSetPostReadFinished(const char *addOnName, bool isReadOk);

// Alias lists: an entry of a name list may hold several names, one per line, any of which matches.
// The aliasIndex-th name of entry var (a new string the caller frees), or null past the last.
char *GetSimpleVarNameFromVarNameList(const StringList_s *list, EntIndex_t var, int aliasIndex,
                                      bool stripFormatting);
// Whether name is one of the lines of aliasList (whole lines, without regard to case).
bool IsSimpleVarInAliasList(const char *name, const char *aliasList);

// The $!READDATASET command that repeats a load (for the journal and for recording).
std::string MakeReadDataSetCommand(const DataSetLoadInfo_s &loadInfo, const StringList_s *varNameList,
                                   ReadDataOption_e option, bool resetStyle, PlotType_e initialPlotType);
