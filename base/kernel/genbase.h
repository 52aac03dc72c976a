// GeneralBase: the root of the style tree, the settings that do not belong to a frame (limits,
// interface switches, file names). GeneralFactoryDefaults holds the compiled-in values; GeneralBase
// is what is in force (factory values, then the configuration file, then the command line).
// The record is plain data read everywhere; the style language sets it field by field.
#pragma once

#include <string>

struct GeneralBase_s {
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
    std::string ExportFName;  // export file
    bool PrintToFile = false;
    std::string TempFilePath; // TEMPFILEPATH; empty means none configured

    // file filters of the file dialogs
    std::string DataFileFilter, AsciiDataFileFilter, BinaryDataFileFilter, LayoutFileFilter,
        InputLayoutFileFilter, LayoutPackageFileFilter, StyleFileFilter, MacroFileFilter,
        EquationFileFilter, ImageFileFilter, ColorMapFileFilter;
};

extern GeneralBase_s GeneralFactoryDefaults;
extern GeneralBase_s GeneralBase;

// Fills GeneralFactoryDefaults with the compiled-in values.
void FillGeneralFactoryDefaults();
// Sets the file names and filters of both copies, names made absolute against the start directory.
void InitializeGeneralFileNameDefaults(const std::string &startupDirectory);
// The values a current installation uses in place of the factory ones; changes GeneralBase only.
void ModernizeGeneralBaseDefaults();
