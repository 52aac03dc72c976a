#include "base/data/readdataset.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <unistd.h>
#include <unordered_map>
#include <unordered_set>

#include "base/data/dataio.h"
#include "base/data/dataset.h"
#include "base/data/fenrow.h"
#include "base/data/fielddata.h"
#include "base/data/strand.h"
#include "base/interact/fileio.h"
#include "base/kernel/alloc.h"
#include "base/kernel/cmdline.h"
#include "base/kernel/errors.h"
#include "base/kernel/genbase.h"
#include "base/kernel/globals.h"
#include "base/kernel/outofmem.h"
#include "base/kernel/seams.h"
#include "base/kernel/undo.h"
#include "base/kernel/set.h"
#include "base/kernel/strlist.h"
#include "base/kernel/strutil.h"
#include "base/kernel/tempdir.h"
#include "base/macro/actcmd.h"
#include "base/macro/macrocomp.h"
#include "base/macro/vocabtables.h"
#include "base/plot/draw0.h"

const char *const OrvanexBaseDataSetReaderName = "ORVANEX";
const char *const OrvanexDataLoaderName = "Orvanex Data Loader";
const char *const OrvanexPackageDataSetReaderName = "Orvanex Package Dataset Reader";

DataSetReader_s DataSetReaders[MaxDataSetReaders];
int NumDataSetReaders = 0;

void SetDeleter_s::operator()(Set_a *set) const { DeallocSet(&set); }

namespace {

struct DataSetDeleter {
    void operator()(DataSet_s *dataSet) const { DeallocDataSet(&dataSet); }
};
using DataSetPtr = std::unique_ptr<DataSet_s, DataSetDeleter>;

struct StringListDeleter {
    void operator()(StringList_s *list) const { StringListDealloc(&list); }
};
using StringListPtr = std::unique_ptr<StringList_s, StringListDeleter>;

struct CharDeleter {
    void operator()(char *text) const { newfree(text); }
};
using CharPtr = std::unique_ptr<char, CharDeleter>;

// The reader whose converter ran the current load, and the load that DataSetPostReadFinished
// closes.
int CurDataSetConverter = -1;
struct PostReadNote {
    DataSet_s *DataSet = nullptr;
    ReadDataOption_e Option = ReadDataOption_New;
    bool Active = false;
} postReadNote;

// The key by which names compare: the case-folded name.
std::string nameKey(const char *name) {
    std::string key = name != nullptr ? name : "";
    for (char &c : key) c = char(toupper(static_cast<unsigned char>(c)));
    return key;
}


// File names of the instructions: each entry may hold several, one per line.
std::vector<std::string> fileNamesOf(const std::vector<std::string> &instructions) {
    std::vector<std::string> names;
    for (const std::string &entry : instructions)
        for (const std::string &line : SplitLines(entry))
            if (!line.empty()) names.push_back(line);
    return names;
}

// A file name as the loader uses it: without surrounding blanks.
std::string PrepareFilenameForOrvanex(const std::string &name) {
    size_t first = name.find_first_not_of(" \t\r");
    if (first == std::string::npos) return std::string();
    return name.substr(first, name.find_last_not_of(" \t\r") - first + 1);
}

// The loader of layout packages, until packages can be read.
bool LayoutPackageDataSetLoader(StringList_s *) {
    ErrMsg("Layout packages are not available in this version of Orvanex.");
    return false;
}

// ---- remote files, picks, damage ---------------------------------------------------------
// A load keeps the remote files it fetched cached until it ends, reads a remote file from its
// local copy, and drops the picked objects. Remote files and picking are subsystems not built
// yet: every name is read as a local file, the persistence levels hold nothing, and there are no
// picks to drop.

void URLFileCacheBeginPersistenceLevel() {}
bool URLFileCacheEndPersistenceLevel() { return true; }
const char *URLFileCacheGetLocalFileName(const char *) { return nullptr; }
void UnpickAllPickedObjects() {}

// A frame whose data set was replaced is drawn again in full.
void SetFrameDamage(Frame_s *frame) { MarkEntireFrameForScreenUpdate(frame); }

// The name a file is read under: its temporary binary file, the local copy of a remote file, or
// the name itself.
const char *fileToRead(const DataFileInfo_s &file) {
    if (!file.TempFileName.empty()) return file.TempFileName.c_str();
    const char *local = URLFileCacheGetLocalFileName(file.FileName.c_str());
    return local != nullptr ? local : file.FileName.c_str();
}

// The action line of a load in the batch log: the instructions joined by "+".
void logReadDataSetAction(const std::vector<std::string> &instructions) {
    ActionCommand_s action;
    action.Action = MacroAction_READDATASET;
    for (const std::string &entry : instructions)
        for (const std::string &line : SplitLines(entry))
            action.String += (action.String.empty() ? "" : "+") + line;
    action.logAction();
}

bool isCurDataSetLocked() {
    return CurFrame != nullptr && CurFrame->DataSet != nullptr && CurFrame->DataSet->IsLocked;
}

int32_t setMax(const Set_a *set) {
    int32_t max = -1;
    for (SetIndex_t m = GetNextMember(set, -1); m >= 0; m = GetNextMember(set, m)) max = int32_t(m);
    return max;
}

// A passive variable in every enabled zone of the data set: float, nodal, with the zone's points.
bool addPassiveVar(DataSet_s *dataSet, EntIndex_t var, const char *name) {
    if (!DataSetAllocVar(dataSet, var) || !DataSetAllocVarData(dataSet, var, name)) return false;
    for (SetIndex_t z = GetNextMember(dataSet->EnabledZones, -1); z >= 0; z = GetNextMember(dataSet->EnabledZones, z)) {
        FieldData_a fieldData = FieldDataAlloc();
        if (fieldData == nullptr) return false;
        FieldDataDefineData(fieldData, LgIndex_t(ZoneGetNumPoints(dataSet, EntIndex_t(z))), FieldDataType_Float,
                            ValueLocation_Nodal);
        FieldDataMakePassive(fieldData);
        SetNativeFieldDataPtr(dataSet, EntIndex_t(z), var, fieldData);
    }
    return true;
}

// ---- one-variable files -----------------------------------------------------------------

FieldDataType_e narrowestTypeFor(LgIndex_t largestIndex) {
    if (largestIndex < 256) return FieldDataType_Byte;
    if (largestIndex < 32766) return FieldDataType_ShortInt;
    return FieldDataType_Float;
}

// A data set of one variable gets coordinates: "I", "J", "K" holding each point's one-based index,
// and the data variable moves after them.
bool expandOneVariableDataSet(DataSet_s *dataSet) {
    int dimensions = 0;
    for (SetIndex_t z = GetNextMember(dataSet->EnabledZones, -1); z >= 0; z = GetNextMember(dataSet->EnabledZones, z)) {
        const ZoneSpec_s *spec = GetZoneSpec(dataSet, EntIndex_t(z));
        if (spec->Type != ZoneType_Ordered) {
            Warning("Unusual DataFile - One variable with FE Structure");
            return true;
        }
    }
    for (SetIndex_t z = GetNextMember(dataSet->EnabledZones, -1); z >= 0; z = GetNextMember(dataSet->EnabledZones, z)) {
        const ZoneSpec_s *spec = GetZoneSpec(dataSet, EntIndex_t(z));
        if (spec->NumPtsI == 1) {
            ErrMsg("Cannot expand 1-Variable datafile.\nIMax = 1 for one of the zones.");
            return false;
        }
        if (spec->NumPtsK > 1 && spec->NumPtsJ == 1) {
            ErrMsg("KMax cannot be > 1 if JMax == 1 in a one variable data set");
            return false;
        }
        int zoneDimensions = spec->NumPtsK > 1 ? 3 : spec->NumPtsJ > 1 ? 2 : 1;
        if (dimensions != 0 && zoneDimensions != dimensions) {
            ErrMsg("Cannot expand 1-variable datafile.\nZones must be all I-Ordered, all IJ-Ordered, or all "
                   "IJK-Ordered.");
            return false;
        }
        dimensions = zoneDimensions;
    }
    if (dimensions == 0) return true;
    // The data variable goes first, before the coordinates go in front of it: a position list
    // may have left empty slots around it.
    for (auto v = EntIndex_t(dataSet->NumVars - 1); v >= 0; v--)
        if (!IsVarEnabled(dataSet, v)) DataSetDeleteVar(dataSet, v);
    static const char *const indexNames[3] = {"I", "J", "K"};
    for (int d = 0; d < dimensions; d++) {
        auto var = EntIndex_t(d);
        if (!DataSetInsertVar(dataSet, var) || !DataSetAllocVar(dataSet, var) ||
            !DataSetAllocVarData(dataSet, var, indexNames[d])) {
            ErrMsg("Out of memory while expanding a one variable data set.");
            return false;
        }
        for (SetIndex_t z = GetNextMember(dataSet->EnabledZones, -1); z >= 0;
             z = GetNextMember(dataSet->EnabledZones, z)) {
            const ZoneSpec_s *spec = GetZoneSpec(dataSet, EntIndex_t(z));
            LgIndex_t dims[3] = {spec->NumPtsI, spec->NumPtsJ, spec->NumPtsK};
            FieldData_a fieldData = FieldDataAlloc();
            bool ok = fieldData != nullptr &&
                      FieldDataDefineData(fieldData, LgIndex_t(CalcNumPointValuesNeeded(spec)),
                                          narrowestTypeFor(dims[d]), ValueLocation_Nodal) &&
                      FieldDataAllocStorableData(fieldData, false);
            if (!ok) {
                FieldDataDealloc(&fieldData, true);
                ErrMsg("Out of memory while expanding a one variable data set.");
                return false;
            }
            LgIndex_t n = 0;
            for (LgIndex_t k = 0; k < dims[2]; k++)
                for (LgIndex_t j = 0; j < dims[1]; j++)
                    for (LgIndex_t i = 0; i < dims[0]; i++, n++) {
                        LgIndex_t index[3] = {i, j, k};
                        SetFieldValue(fieldData, n, double(index[d] + 1));
                    }
            SetNativeFieldDataPtr(dataSet, EntIndex_t(z), var, fieldData);
        }
    }
    return true;
}

// ---- reading the files ------------------------------------------------------------------

// The map from a file's variables to the data set's. By position: a file variable keeps its
// number if it is to be loaded. By name: each data set variable, in turn, takes the first file
// variable not yet taken whose name equals one of its aliases.
std::vector<EntIndex_t> buildVarMap(const DataSetLoadInfo_s &loadInfo, const DataFileInfo_s &file,
                                    const StringList_s *names, const DataSet_s *dataSet) {
    std::vector<EntIndex_t> map(file.VarNames.size(), -1);
    if (loadInfo.VarLoadMode == VarLoadMode_ByPosition) {
        for (size_t v = 0; v < map.size(); v++)
            if (loadInfo.VarsToLoad && InSet(loadInfo.VarsToLoad.get(), SetIndex_t(v)) && IsVarEnabled(dataSet, EntIndex_t(v)))
                map[v] = EntIndex_t(v);
        return map;
    }
    std::unordered_map<std::string, std::vector<EntIndex_t>> byName;  // in file order
    for (size_t v = file.VarNames.size(); v-- > 0;) byName[nameKey(file.VarNames[v].c_str())].push_back(EntIndex_t(v));
    for (SetIndex_t var = GetNextMember(dataSet->EnabledVars, -1); var >= 0; var = GetNextMember(dataSet->EnabledVars, var)) {
        const char *entry = StringListGetStringRef(names, LgIndex_t(var));
        if (entry == nullptr) continue;
        for (const std::string &alias : SplitLines(entry)) {
            auto found = byName.find(nameKey(alias.c_str()));
            if (found == byName.end() || found->second.empty()) continue;
            map[size_t(found->second.back())] = EntIndex_t(var);
            found->second.pop_back();
            break;
        }
    }
    return map;
}

// Reads every file of the load into the new data set. With data, each position in VarsToLoad
// first becomes a variable named from the list.
bool readFilesIntoDataSet(DataSetLoadInfo_s *loadInfo, bool hasData, const StringList_s *names, DataSet_s *dataSet,
                          DataFileExtras_s *extras) {
    Interrupted = false;
    if (hasData) {
        for (SetIndex_t var = GetNextMember(loadInfo->VarsToLoad.get(), -1); var >= 0;
             var = GetNextMember(loadInfo->VarsToLoad.get(), var)) {
            if (var >= StringListCount(names)) {
                ErrMsg("Variable %d does not exist in the data file.", int(var) + 1);
                return false;
            }
            CharPtr name(GetSimpleVarNameFromVarNameList(names, EntIndex_t(var), 0, false));
            if (!name) return false;
            if (dataSet->IsLocked) {
                DataSetShowLockError("add a variable");
                return false;
            }
            if (!DataSetAllocVar(dataSet, EntIndex_t(var)) || !DataSetAllocVarData(dataSet, EntIndex_t(var), name.get())) {
                ErrMsg("Out of space while allocating var names");
                return false;
            }
        }
    }
    DataFileReadPlan_s plan;
    plan.ZonesToLoad = loadInfo->ZonesToLoad.get();
    plan.LastZone = loadInfo->ZonesToLoad ? EntIndex_t(setMax(loadInfo->ZonesToLoad.get())) : MaxNumZonesOrVars - 1;
    plan.Skip[0] = loadInfo->IJKSkip.I;
    plan.Skip[1] = loadInfo->IJKSkip.J;
    plan.Skip[2] = loadInfo->IJKSkip.K;
    plan.IncludeText = loadInfo->HasText;
    plan.IncludeGeom = loadInfo->HasGeoms;
    plan.IncludeCustomLabels = loadInfo->HasCustomLabels;
    plan.IncludeData = hasData;
    int32_t zoneOffset = 0;
    for (const DataFileInfo_s &file : loadInfo->FileList) {
        std::vector<EntIndex_t> map = hasData ? buildVarMap(*loadInfo, file, names, dataSet)
                                              : std::vector<EntIndex_t>(file.VarNames.size(), -1);
        plan.Offset = file.Offset;
        plan.VarMap = &map;
        plan.ZoneOffset = EntIndex_t(zoneOffset);
        // A converted file is deleted after the load, so its values are taken in at once.
        plan.IsTempOrRemote = !file.TempFileName.empty();
        // Past the last zone to read a file still gives its title, labels, text, geometries and
        // auxiliary data: only its zones are passed over.
        if (!ReadDataFileIntoDataSet(fileToRead(file), dataSet, plan, extras)) return false;
        zoneOffset += file.NumZones;
        if (zoneOffset > MaxNumZonesOrVars) {
            ErrMsg("Exceeded maximum number of zones allowed (32700).");
            return false;
        }
    }
    if (IsEmpty(dataSet->EnabledZones)) {
        DeleteTrailingDisabledZones(dataSet);
        return true;
    }
    DeleteTrailingDisabledZones(dataSet);
    if (MemberCount(dataSet->EnabledVars) == 1 && !expandOneVariableDataSet(dataSet)) return false;
    LgIndex_t strands = dataSet->StrandInfoList != nullptr ? ArrayListGetCount(dataSet->StrandInfoList) : 0;
    for (LgIndex_t s = 0; s < strands; s++) UpdateStrandInfoFlags(dataSet, int32_t(s));
    return true;
}

// The first alias that appears in two entries, if any.
bool findDoubleName(const StringList_s *names, std::string *doubled) {
    std::unordered_map<std::string, LgIndex_t> owner;
    for (LgIndex_t n = 0; n < StringListCount(names); n++) {
        const char *entry = StringListGetStringRef(names, n);
        if (entry == nullptr) continue;
        for (const std::string &alias : SplitLines(entry)) {
            if (alias.empty()) continue;
            auto inserted = owner.emplace(nameKey(alias.c_str()), n);
            if (!inserted.second && inserted.first->second != n) {
                *doubled = alias;
                return true;
            }
        }
    }
    return false;
}

// The checks of an append or replace by name against the present data set.
bool checkNamesCoverPresent(const StringList_s *names, const DataSet_s *present) {
    if (StringListCount(names) < present->NumVars) {
        ErrMsg("Cannot append data set: Not enough variable names supplied in instructions for appended data set");
        return false;
    }
    for (SetIndex_t var = GetNextMember(present->EnabledVars, -1); var >= 0; var = GetNextMember(present->EnabledVars, var)) {
        if (!IsSimpleVarInAliasList(GetVarName(present, EntIndex_t(var)), StringListGetStringRef(names, LgIndex_t(var)))) {
            ErrMsg("Cannot append data set: Variable names supplied for variable %d are not a superset of the "
                   "existing names", int(var) + 1);
            return false;
        }
    }
    return true;
}

// What an append may change in the present data set before it joins the new one: the variable
// count and the enabled variables. A failed append goes back to them, so the present data set is
// left exactly as it was.
struct PresentVarsNote {
    EntIndex_t NumVars = 0;
    SetPtr_t EnabledVars;
};

bool notePresentVars(const DataSet_s *present, PresentVarsNote *note) {
    note->NumVars = present->NumVars;
    note->EnabledVars.reset(AllocSet(false));
    return note->EnabledVars && CopySet(note->EnabledVars.get(), present->EnabledVars, false);
}

void restorePresentVars(DataSet_s *present, const PresentVarsNote &note) {
    // Variables added past the old end go from the last down; gaps that were filled are emptied.
    while (present->NumVars > note.NumVars) DataSetDeleteVar(present, EntIndex_t(present->NumVars - 1));
    for (SetIndex_t var = GetNextMember(present->EnabledVars, -1); var >= 0;) {
        SetIndex_t next = GetNextMember(present->EnabledVars, var);
        if (!InSet(note.EnabledVars.get(), var)) DataSetDeallocVar(present, EntIndex_t(var));
        var = next;
    }
}

// Before an append the two data sets must have the same variables. By name, the extra names
// become passive variables of the present data set; by position, each side gets the variables
// only the other has. On failure the caller takes back what was added to the present data set.
bool matchVariablesForAppend(DataSet_s *present, DataSet_s *incoming, VarLoadMode_e mode, const StringList_s *names) {
    auto addToPresent = [&](EntIndex_t var, const char *name) {
        if (present->IsLocked) {
            DataSetShowLockError("add a variable");
            return false;
        }
        if (!addPassiveVar(present, var, name)) {
            OutOfMemoryMsg();
            return false;
        }
        return true;
    };
    if (mode == VarLoadMode_ByName) {
        for (EntIndex_t var = present->NumVars; var < EntIndex_t(StringListCount(names)); var++) {
            CharPtr name(GetSimpleVarNameFromVarNameList(names, var, 0, false));
            if (!addToPresent(var, name ? name.get() : "")) return false;
        }
    }
    EntIndex_t numVars = std::max(present->NumVars, incoming->NumVars);
    for (EntIndex_t var = 0; var < numVars; var++) {
        bool inPresent = var < present->NumVars && IsVarEnabled(present, var);
        bool inIncoming = var < incoming->NumVars && IsVarEnabled(incoming, var);
        if (inPresent == inIncoming) continue;
        if (inPresent) {
            if (!addPassiveVar(incoming, var, GetVarName(present, var))) {
                OutOfMemoryMsg();
                return false;
            }
        } else if (!addToPresent(var, GetVarName(incoming, var))) {
            return false;
        }
    }
    // The present names win.
    for (SetIndex_t var = GetNextMember(present->EnabledVars, -1); var >= 0; var = GetNextMember(present->EnabledVars, var))
        SetVarName(incoming, EntIndex_t(var), GetVarName(present, EntIndex_t(var)));
    return true;
}

std::string quotedList(const std::vector<std::string> &items) {
    std::string text;
    for (const std::string &item : items) {
        text += '"';
        for (char c : item) {
            if (c == '"' || c == '\\') text += '\\';
            text += c;
        }
        text += "\" ";
    }
    if (!text.empty()) text.pop_back();
    return text;
}

// "[1,3-5]": one-based members, runs joined.
std::string setText(const Set_a *set) {
    std::string text = "[";
    SetIndex_t m = GetNextMember(set, -1);
    while (m >= 0) {
        SetIndex_t last = m;
        while (GetNextMember(set, last) == last + 1) last++;
        if (text.size() > 1) text += ',';
        text += std::to_string(m + 1);
        if (last > m) text += "-" + std::to_string(last + 1);
        m = GetNextMember(set, last);
    }
    return text + "]";
}

const char *plotTypeWord(PlotType_e type) {
    static const char *const words[] = {"AUTOMATIC", "CARTESIAN3D", "CARTESIAN2D", "XYLINE", "SKETCH", "POLARLINE"};
    return type >= 0 && type <= PlotType_PolarLine ? words[type] : "AUTOMATIC";
}

}  // namespace

// ---- readers ----------------------------------------------------------------------------

void RegisterBuiltInDataSetReaders() {
    if (NumDataSetReaders > 0) return;
    RegisterDataSetReader(FenrowAsciiDatafile, nullptr, OrvanexBaseDataSetReaderName, nullptr, nullptr, "dat",
                          DataSetReaderKind_BuiltIn);
    RegisterDataSetReader(nullptr, LayoutPackageDataSetLoader, OrvanexPackageDataSetReaderName, nullptr, nullptr,
                          "lpk", DataSetReaderKind_BuiltIn);
}

bool RegisterDataSetReader(DataSetConverter_pf converter, DataSetLoader_pf loader, const char *name,
                           DataSetLoaderSelection_pf selectionCallback,
                           DataSetInstructionOverride_pf instructionOverride, const char *extension,
                           DataSetReaderKind_e kind) {
    if ((converter == nullptr) == (loader == nullptr) || name == nullptr || name[0] == '\0') {
        ErrMsg("Attempt to register invalid DataSet Converter");
        return false;
    }
    if (loader != nullptr && kind == DataSetReaderKind_AddOn && selectionCallback == nullptr) {
        ErrMsg("Invalid LoaderSelectionCallback in attempt to register a data set loader");
        return false;
    }
    if (NumDataSetReaders >= MaxDataSetReaders) {
        ErrMsg("Too many data set converters and loaders");
        return false;
    }
    for (int n = 0; n < NumDataSetReaders; n++)
        if (ustrcmp(DataSetReaders[n].Name.c_str(), name) == 0) {
            ErrMsg("Duplicate DataSetReaders: %-30s", name);
            return false;
        }
    DataSetReader_s &reader = DataSetReaders[NumDataSetReaders++];
    reader = DataSetReader_s{};
    reader.Converter = converter;
    reader.Loader = loader;
    reader.LoaderSelectionCallback = selectionCallback;
    reader.InstructionOverride = instructionOverride;
    reader.Name = name;
    reader.Extension = extension != nullptr ? extension : "";
    reader.ReaderKind = kind;
    return true;
}

int GetDataSetReaderByName(const char *name) {
    // The name users see for the built-in reader finds it too.
    if (name != nullptr && ustrcmp(name, OrvanexDataLoaderName) == 0) name = OrvanexBaseDataSetReaderName;
    for (int n = 0; n < NumDataSetReaders; n++)
        if (ustrcmp(DataSetReaders[n].Name.c_str(), name) == 0) return n;
    ErrMsg("Unknown DataSet Reader: %-30s", name != nullptr ? name : "");
    return -1;
}

void MopupDataSetReaders() {
    for (int n = 0; n < NumDataSetReaders; n++) DataSetReaders[n] = DataSetReader_s{};
    NumDataSetReaders = 0;
}

// ---- name lists -------------------------------------------------------------------------

char *GetSimpleVarNameFromVarNameList(const StringList_s *list, EntIndex_t var, int aliasIndex, bool stripFormatting) {
    const char *entry = var >= 0 && var < StringListCount(list) ? StringListGetStringRef(list, var) : nullptr;
    if (entry == nullptr) return nullptr;
    std::vector<std::string> aliases = SplitLines(entry);
    if (aliasIndex < 0 || size_t(aliasIndex) >= aliases.size()) return nullptr;
    std::string name = aliases[size_t(aliasIndex)];
    if (stripFormatting) name = PrepareFilenameForOrvanex(name);
    return DupString(name.c_str());
}

bool IsSimpleVarInAliasList(const char *name, const char *aliasList) {
    if (name == nullptr || aliasList == nullptr) return false;
    for (const std::string &alias : SplitLines(aliasList))
        if (ustrcmp(alias.c_str(), name) == 0) return true;
    return false;
}

StringList_s *InitializeVarNameListFromLoadInfo(DataSetLoadInfo_s *loadInfo, bool *allMatched) {
    *allMatched = true;
    const DataFileInfo_s *first = nullptr;
    for (const DataFileInfo_s &file : loadInfo->FileList)
        if (file.NumZones > 0) {
            first = &file;
            break;
        }
    if (first == nullptr) return nullptr;
    StringListPtr names(StringListAlloc());
    if (!names) return nullptr;
    if (loadInfo->VarLoadMode == VarLoadMode_ByPosition) {
        EntIndex_t count = first->NumVars;
        for (const DataFileInfo_s &file : loadInfo->FileList)
            if (file.NumZones > 0) count = std::min(count, file.NumVars);
        for (EntIndex_t v = 0; v < count; v++)
            if (!StringListAppendString(names.get(), first->VarNames[size_t(v)].c_str())) return nullptr;
        // Positions beyond the names drop out of the variables to load.
        if (loadInfo->VarsToLoad)
            for (SetIndex_t m = GetNextMember(loadInfo->VarsToLoad.get(), -1); m >= 0;
                 m = GetNextMember(loadInfo->VarsToLoad.get(), m))
                if (m >= count) RemoveFromSet(loadInfo->VarsToLoad.get(), m);
        return names.release();
    }
    std::vector<std::unordered_set<std::string>> others;
    for (const DataFileInfo_s &file : loadInfo->FileList) {
        if (file.NumZones == 0 || &file == first) continue;
        others.emplace_back();
        for (const std::string &name : file.VarNames) others.back().insert(nameKey(name.c_str()));
    }
    for (const std::string &name : first->VarNames) {
        std::string key = nameKey(name.c_str());
        bool everywhere = std::all_of(others.begin(), others.end(),
                                      [&](const std::unordered_set<std::string> &set) { return set.count(key) != 0; });
        if (!everywhere) {
            *allMatched = false;
            continue;
        }
        if (!StringListAppendString(names.get(), name.c_str())) return nullptr;
    }
    if (StringListCount(names.get()) == 0) return nullptr;
    return names.release();
}

// ---- preparing --------------------------------------------------------------------------

DataSetLoadInfo_s::~DataSetLoadInfo_s() { CleanupDataSetLoadInfo(this); }

void CleanupDataSetLoadInfo(DataSetLoadInfo_s *loadInfo) {
    for (DataFileInfo_s &file : loadInfo->FileList)
        if (!file.TempFileName.empty()) unlink(file.TempFileName.c_str());
    loadInfo->FileList.clear();
    loadInfo->VarsToLoad.reset();
    loadInfo->ZonesToLoad.reset();
}

bool SetupDataSetFileNameList(const std::vector<std::string> &fileNames, const std::vector<int64_t> *offsets,
                              std::vector<DataFileInfo_s> *fileList, int) {
    fileList->clear();
    // A layout dialog puts ".SKIP." first for a data set that the user left out.
    if (!fileNames.empty() && fileNames.front().find(".SKIP.") != std::string::npos) {
        ErrMsg("No files were selected");
        return false;
    }
    for (size_t n = 0; n < fileNames.size(); n++) {
        DataFileInfo_s file;
        file.FileName = PrepareFilenameForOrvanex(fileNames[n]);
        if (file.FileName.empty()) continue;
        file.Offset = offsets != nullptr && n < offsets->size() ? (*offsets)[n] : 0;
        fileList->push_back(std::move(file));
    }
    if (fileList->empty()) {
        ErrMsg("No files were selected");
        return false;
    }
    return true;
}

bool InsertTempBinaryFileNames(std::vector<DataFileInfo_s> *fileList, int reader) {
    for (DataFileInfo_s &file : *fileList) {
        FILE *raw = nullptr;
        if (!Open_File(&raw, file.FileName.c_str(), true, false, false, true, false)) return false;
        FileStream_s stream{raw, true};
        int version = fseeko(raw, file.Offset, SEEK_SET) == 0 ? GetInputVersion(&stream) : 0;
        Close_File(&raw, false);
        if (version > BinaryFileVersion) return false;  // GetInputVersion said why
        if (version != 0) continue;
        std::string tempName;
        if (!GetRandomFileName(&tempName)) {
            ErrMsg("Unable to create temp scratch file.\nCheck Directory permissions");
            return false;
        }
        char *errorText = nullptr;
        bool converted = DataSetReaders[reader].Converter != nullptr &&
                         DataSetReaders[reader].Converter(file.FileName.c_str(), tempName.c_str(), &errorText);
        CharPtr error(errorText);
        if (!converted) {
            unlink(tempName.c_str());
            ErrMsg("%s", error ? error.get() : "Unable to convert the data file.");
            return false;
        }
        file.TempFileName = tempName;
        file.Offset = 0;
    }
    return true;
}

bool PrepareToLoadBinaryDatafiles(int reader, const std::vector<std::string> &fileNames,
                                  const std::vector<int64_t> *offsets, DataSetLoadInfo_s *loadInfo,
                                  ZoneSpecList_t *zoneSpecs, EntIndex_t *numZones) {
    zoneSpecs->clear();
    *numZones = 0;
    loadInfo->Reader = int16_t(reader);
    if (!SetupDataSetFileNameList(fileNames, offsets, &loadInfo->FileList, reader) ||
        !InsertTempBinaryFileNames(&loadInfo->FileList, reader))
        return false;
    loadInfo->HasText = loadInfo->HasGeoms = loadInfo->HasCustomLabels = loadInfo->HasData = false;
    for (DataFileInfo_s &file : loadInfo->FileList) {
        DataFileHeaderInfo_s header;
        if (!ReadDataFileHeader(fileToRead(file), file.Offset, &header)) return false;
        loadInfo->HasText = loadInfo->HasText || header.HasText;
        loadInfo->HasGeoms = loadInfo->HasGeoms || header.HasGeoms;
        loadInfo->HasCustomLabels = loadInfo->HasCustomLabels || header.HasCustomLabels;
        loadInfo->HasData = loadInfo->HasData || !header.ZoneSpecs.empty();
        file.NumZones = EntIndex_t(header.ZoneSpecs.size());
        file.NumVars = EntIndex_t(header.VarNames.size());
        file.VarNames = header.VarNames;
        for (ZoneSpec_s *&spec : header.ZoneSpecs) {
            zoneSpecs->emplace_back(spec);
            spec = nullptr;
        }
    }
    *numZones = EntIndex_t(zoneSpecs->size());
    return true;
}

// ---- the load ---------------------------------------------------------------------------

void InitReadDataSetArgs(ReadDataSetArgs_s *args) {
    *args = ReadDataSetArgs_s{};
    args->VarLoadMode = VarLoadMode_e(GeneralBase.DataFileVarLoadMode);
    args->AssignStrandIDs = GeneralBase.AssignStrandIDs;
}

namespace {

bool readDataSet(const ReadDataSetArgs_s &args) {
    int reader = GetDataSetReaderByName(args.DataSetReader.c_str());
    if (reader < 0) return false;
    if (args.ReadDataOption != ReadDataOption_Append && isCurDataSetLocked()) {
        DataSetShowLockError("read a data set");
        return false;
    }
    if (args.IJKSkip.I < 1 || args.IJKSkip.J < 1 || args.IJKSkip.K < 1) {
        ErrMsg("Index skip values must be 1 or greater.");
        return false;
    }
    DataSetLoadInfo_s loadInfo;
    loadInfo.FileNamesOrInstructions = args.FileNamesOrInstructions;
    bool ok;
    if (DataSetReaders[reader].Converter != nullptr) {
        ZoneSpecList_t zoneSpecs;
        EntIndex_t numZones = 0;
        ok = PrepareToLoadBinaryDatafiles(reader, fileNamesOf(args.FileNamesOrInstructions), nullptr, &loadInfo,
                                          &zoneSpecs, &numZones);
        if (ok) {
            loadInfo.HasText = args.IncludeText;
            loadInfo.HasGeoms = args.IncludeGeom;
            loadInfo.HasCustomLabels = args.IncludeCustomLabels;
            loadInfo.HasData = args.IncludeData;
            loadInfo.CollapseZonesAndVars = args.CollapseZonesAndVars;
            loadInfo.AssignStrandIDs = args.AssignStrandIDs;
            loadInfo.AddZonesToExistingStrands = args.AddZonesToExistingStrands;
            loadInfo.VarLoadMode = args.VarLoadMode;
            // An interactive fresh load of a file with one variable reads it by position.
            bool keepsStyle = args.ReadDataOption == ReadDataOption_New && !args.ResetStyle;
            if (args.IsInteractive && args.ReadDataOption != ReadDataOption_Append && !keepsStyle &&
                std::any_of(loadInfo.FileList.begin(), loadInfo.FileList.end(),
                            [](const DataFileInfo_s &file) { return file.NumVars == 1; }))
                loadInfo.VarLoadMode = VarLoadMode_ByPosition;
            loadInfo.IJKSkip = args.IJKSkip;
            auto copyOf = [](const Set_a *set) {
                SetPtr_t copy;
                if (set != nullptr) {
                    copy.reset(AllocSet(false));
                    if (copy && !CopySet(copy.get(), set, false)) copy.reset();
                }
                return copy;
            };
            loadInfo.VarsToLoad = copyOf(args.VarPositionList);
            loadInfo.ZonesToLoad = copyOf(args.ZonesToLoad);
            ok = (args.VarPositionList == nullptr || loadInfo.VarsToLoad) &&
                 (args.ZonesToLoad == nullptr || loadInfo.ZonesToLoad);
            if (!ok) OutOfMemoryMsg();
        }
        ok = ok && Action_ReadCookedDataSet(&loadInfo, zoneSpecs, args.VarNameList, args.ReadDataOption,
                                             args.ResetStyle, args.InitialPlotType, args.InitialPlotFirstZoneOnly,
                                             false, args.IsInteractive && !OrvanexLaunchedWithMacro());
    } else {
        loadInfo.Reader = int16_t(reader);
        ok = Action_ReadCookedDataSet(&loadInfo, ZoneSpecList_t{}, nullptr, args.ReadDataOption, args.ResetStyle,
                                      args.InitialPlotType, args.InitialPlotFirstZoneOnly, false, false);
    }
    if (ok) UndoStateInvalidateUndo();
    CleanupDataSetLoadInfo(&loadInfo);
    return ok;
}

}  // namespace

bool Action_ReadDataSet(const ReadDataSetArgs_s &args) {
    // Remote files fetched for this load stay cached until it ends, whichever way it ends.
    URLFileCacheBeginPersistenceLevel();
    bool ok = readDataSet(args);
    return URLFileCacheEndPersistenceLevel() && ok;
}

bool Action_ReadCookedDataSet(DataSetLoadInfo_s *loadInfo, const ZoneSpecList_t &zoneSpecs,
                              const StringList_s *varNameList, ReadDataOption_e option, bool resetStyle,
                              PlotType_e initialPlotType, bool initialPlotFirstZoneOnly, bool,
                              bool offerInitialPlot) {
    DataSetReader_s &reader = DataSetReaders[loadInfo->Reader];
    logReadDataSetAction(loadInfo->FileNamesOrInstructions);
    bool ok;
    if (reader.Converter != nullptr) {
        // The initial-plot dialog belongs to the window; without it the type stays as asked.
        (void)offerInitialPlot;
        CurDataSetConverter = loadInfo->Reader;
        // VarsToLoad may be rewritten by the read; the caller's choice is put back afterwards.
        SetPtr_t keptVars;
        if (loadInfo->VarsToLoad) {
            keptVars.reset(AllocSet(false));
            if (keptVars) CopySet(keptVars.get(), loadInfo->VarsToLoad.get(), false);
        }
        if (option != ReadDataOption_New) BeginUndoCommandBlock(UndoBlock_DataStructure);
        ok = GoReadDataSet(loadInfo, zoneSpecs, varNameList, option, resetStyle, initialPlotType,
                           initialPlotFirstZoneOnly);
        if (option != ReadDataOption_New) EndUndoCommandBlock(ok);
        loadInfo->VarsToLoad = std::move(keptVars);
        if (ok) {
            reader.LastFileNames.clear();
            for (const DataFileInfo_s &file : loadInfo->FileList) reader.LastFileNames.push_back(file.FileName);
            DataSet_s *dataSet = CurFrame->DataSet;
            if (dataSet != nullptr && dataSet->Journal.IsValid) {
                // The journal keeps commands compressed, as macros run them.
                std::string text = MakeReadDataSetCommand(*loadInfo, varNameList, option, resetStyle, initialPlotType);
                std::string compressed;
                if (GetNextCompressedCommand(nullptr, text.c_str(), &compressed, nullptr, nullptr, nullptr))
                    JournalRegisterMacroCommand(dataSet, compressed.c_str());
                else
                    MarkDataSetAsChanged(dataSet);
            }
        }
    } else {
        StringListPtr instructions(StringListAlloc());
        for (const std::string &entry : loadInfo->FileNamesOrInstructions)
            StringListAppendString(instructions.get(), entry.c_str());
        ok = instructions && reader.Loader(instructions.get());
    }
    postReadNote = PostReadNote{CurFrame != nullptr ? CurFrame->DataSet : nullptr, option, true};
    if (reader.PostRead != nullptr)
        reader.PostRead(ok);
    else
        DataSetPostReadFinished(nullptr, ok);
    if (reader.Loader != nullptr || option == ReadDataOption_New) UndoStateInvalidateUndo();
    return ok;
}

bool GoReadDataSet(DataSetLoadInfo_s *loadInfo, const ZoneSpecList_t &zoneSpecs, const StringList_s *varNameList,
                   ReadDataOption_e option, bool resetStyle, PlotType_e initialPlotType,
                   bool initialPlotFirstZoneOnly) {
    if (CurFrame == nullptr) {
        ErrMsg("Cannot read a data set: there is no frame.");
        return false;
    }
    if (option != ReadDataOption_Append) UnpickAllPickedObjects();
    DataSet_s *present = CurFrame->DataSet;
    bool hasZones = loadInfo->HasData && !zoneSpecs.empty();
    StringListPtr names;
    if (hasZones) {
        bool allMatched = true;
        names.reset(varNameList != nullptr ? StringListCopy(varNameList)
                                           : InitializeVarNameListFromLoadInfo(loadInfo, &allMatched));
        if (loadInfo->VarLoadMode == VarLoadMode_ByName && !names) {
            ErrMsg("The specified data files have no matching variable names. Please reload the files using the "
                   "Load Data File Options dialog to associate variable names.");
            return false;
        }
        if (!names) names.reset(StringListAlloc());
        if (loadInfo->VarLoadMode == VarLoadMode_ByName || !loadInfo->VarsToLoad) {
            loadInfo->VarsToLoad.reset(AllocSet(false));
            for (LgIndex_t n = 0; loadInfo->VarsToLoad && n < StringListCount(names.get()); n++)
                AddToSet(loadInfo->VarsToLoad.get(), n, false);
        }
        std::string doubled;
        if (loadInfo->VarLoadMode == VarLoadMode_ByName && findDoubleName(names.get(), &doubled)) {
            ErrMsg("Invalid variable name list, the variable: \"%s\" is referenced more than once.\n\nTo load the "
                   "variables by name you must remove duplicates from the \"Load Data File Option\" dialog's list of "
                   "variables to load or load the variables by position.\n\nTo access the \"Load Data File Options\" "
                   "dialog press the \"OK\" button, then select the \"Specify Options\" toggle in the \"Load  "
                   "DataFile\" dialog and reload the file.",
                   doubled.c_str());
            return false;
        }
        if (option != ReadDataOption_New && present != nullptr && loadInfo->VarLoadMode == VarLoadMode_ByName &&
            !checkNamesCoverPresent(names.get(), present))
            return false;
    }

    DataSetPtr dataSet(AllocDataSet(nullptr, true, true));
    if (!dataSet) return false;
    if (present != nullptr && present->IsLocked) {
        dataSet->IsLocked = true;
        dataSet->LockOwner = DupString(present->LockOwner != nullptr ? present->LockOwner : "");
    }
    DataFileExtras_s extras;
    if (!readFilesIntoDataSet(loadInfo, hasZones, names.get(), dataSet.get(), &extras)) return false;

    auto attachExtras = [&]() {
        if (CurFrame == nullptr) return;
        std::move(extras.Texts.begin(), extras.Texts.end(), std::back_inserter(CurFrame->Texts));
        std::move(extras.Geoms.begin(), extras.Geoms.end(), std::back_inserter(CurFrame->Geoms));
    };
    if (IsEmpty(dataSet->EnabledZones)) {
        // Labels alone are added to (append) or put in place of the present ones; with neither
        // zones nor labels only text and geometries remain to go on.
        bool labelsOnly = dataSet->NumCustomLabelSets > 0 && present != nullptr;
        if (labelsOnly && option != ReadDataOption_Append) {
            for (StringList_s *&labels : present->CustomLabels) StringListDealloc(&labels);
            present->NumCustomLabelSets = 0;
        }
        for (int16_t n = 0; labelsOnly && n < dataSet->NumCustomLabelSets && present->NumCustomLabelSets < MaxCustomLabelSets;
             n++) {
            present->CustomLabels[present->NumCustomLabelSets++] = dataSet->CustomLabels[n];
            dataSet->CustomLabels[n] = nullptr;
        }
        if (labelsOnly || dataSet->NumCustomLabelSets == 0) {
            attachExtras();
            return true;
        }
    }
    if (loadInfo->CollapseZonesAndVars) CollapseDataSet(dataSet.get());
    // An append changes the present data set's variables before the join, which may still refuse
    // (too many label sets or zones in all); on any failure those changes are taken back.
    bool appending = option == ReadDataOption_Append && present != nullptr;
    PresentVarsNote presentVars;
    if (appending && !notePresentVars(present, &presentVars)) {
        OutOfMemoryMsg();
        return false;
    }
    if (appending && !matchVariablesForAppend(present, dataSet.get(), loadInfo->VarLoadMode, names.get())) {
        restorePresentVars(present, presentVars);
        return false;
    }
    DataSet_s *incoming = dataSet.get();
    bool attached = AttachDataSetToCurFrame(&incoming, option, loadInfo->AssignStrandIDs,
                                            loadInfo->AddZonesToExistingStrands, resetStyle, initialPlotType,
                                            initialPlotFirstZoneOnly);
    if (incoming == nullptr) dataSet.release();  // the frame owns it now, or it was joined and freed
    if (!attached) {
        // Once joined the new zones are the present data set's; before that, nothing of the load
        // may stay in it.
        if (appending && incoming != nullptr) restorePresentVars(present, presentVars);
        return false;
    }
    attachExtras();
    return true;
}

void DataSetPostReadFinished(const char *, bool isReadOk) {
    if (!postReadNote.Active) return;
    DataSet_s *dataSet = postReadNote.DataSet;
    bool held = false;
    for (int n = 0; n < FrameStackCount() && dataSet != nullptr; n++)
        if (FrameStackGet(n)->DataSet == dataSet) held = true;
    if (held && !isReadOk) {
        MarkDataSetAsChanged(dataSet);
        if (!dataSet->Journal.IsValid) CleanupDataSetJournal(dataSet);
    }
    // Every frame that took the replacing data set is drawn afresh.
    if (held && isReadOk && postReadNote.Option == ReadDataOption_Replace)
        for (int n = 0; n < FrameStackCount(); n++)
            if (FrameStackGet(n)->DataSet == dataSet) SetFrameDamage(FrameStackGet(n));
    postReadNote = PostReadNote{};
}

std::string MakeReadDataSetCommand(const DataSetLoadInfo_s &loadInfo, const StringList_s *varNameList,
                                   ReadDataOption_e option, bool resetStyle, PlotType_e initialPlotType) {
    static const char *const optionWords[] = {"NEW", "APPEND", "REPLACE"};
    std::vector<std::string> files;
    for (const DataFileInfo_s &file : loadInfo.FileList) files.push_back(file.FileName);
    std::string command = "$!READDATASET  '" + quotedList(files) + "'\n";
    command += std::string("  READDATAOPTION = ") + optionWords[option] + "\n";
    command += std::string("  RESETSTYLE = ") + (resetStyle ? "YES" : "NO") + "\n";
    if (!loadInfo.HasText) command += "  INCLUDETEXT = NO\n";
    if (!loadInfo.HasGeoms) command += "  INCLUDEGEOM = NO\n";
    if (!loadInfo.HasCustomLabels) command += "  INCLUDECUSTOMLABELS = NO\n";
    if (!loadInfo.HasData) command += "  INCLUDEDATA = NO\n";
    if (loadInfo.CollapseZonesAndVars) command += "  COLLAPSEZONESANDVARS = YES\n";
    if (loadInfo.AddZonesToExistingStrands) command += "  ADDZONESTOEXISTINGSTRANDS = YES\n";
    if (loadInfo.ZonesToLoad) command += "  ZONELIST = " + setText(loadInfo.ZonesToLoad.get()) + "\n";
    if (loadInfo.IJKSkip.I != 1 || loadInfo.IJKSkip.J != 1 || loadInfo.IJKSkip.K != 1)
        command += "  IJKSKIP\n  {\n    I = " + std::to_string(loadInfo.IJKSkip.I) + "\n    J = " +
                   std::to_string(loadInfo.IJKSkip.J) + "\n    K = " + std::to_string(loadInfo.IJKSkip.K) + "\n  }\n";
    command += std::string("  INITIALPLOTTYPE = ") + plotTypeWord(initialPlotType) + "\n";
    if (loadInfo.VarLoadMode == VarLoadMode_ByName) {
        command += "  VARLOADMODE = BYNAME\n";
        if (varNameList != nullptr) {
            std::vector<std::string> names;
            for (LgIndex_t n = 0; n < StringListCount(varNameList); n++) {
                const char *entry = StringListGetStringRef(varNameList, n);
                std::string joined;
                for (const std::string &alias : SplitLines(entry != nullptr ? entry : ""))
                    joined += (joined.empty() ? "" : ";") + alias;
                names.push_back(joined);
            }
            command += "  VARNAMELIST = '" + quotedList(names) + "'\n";
        }
    } else {
        command += "  VARLOADMODE = BYPOSITION\n";
        if (loadInfo.VarsToLoad) command += "  VARPOSITIONLIST = " + setText(loadInfo.VarsToLoad.get()) + "\n";
    }
    command += std::string("  ASSIGNSTRANDIDS = ") + (loadInfo.AssignStrandIDs ? "YES" : "NO") + "\n";
    return command;
}
