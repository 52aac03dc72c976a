// The physical-display file "orvanex.phy": the work-area size and dot pitch used in batch mode,
// and the five most recently used layout files. Read by every run, written by interactive runs
// at shutdown.
#pragma once

#include <string>

constexpr int NumMRULayoutFiles = 5;

struct PhysicalDisplay_s {
    int WorkAreaWidth = 800;
    int WorkAreaHeight = 600;
    double DotsPerCmX = 38.0;
    double DotsPerCmY = 38.0;
    int Reserved = 0;  // written back as read
    std::string MRULayoutFiles[NumMRULayoutFiles];  // newest first; empty for an empty slot
};

enum PhyFileStatus_e {
    PhyFileStatus_Ok,
    PhyFileStatus_Missing,
    PhyFileStatus_Old,      // version below 700
    PhyFileStatus_Invalid   // bad header or numbers
};

extern PhysicalDisplay_s PhysicalDisplay;

// The file's name: $ORVPHYFILE if set, else "orvanex.phy" in the start-up directory.
std::string PhysicalDisplayFileName();
// Reads a file into phy. MRU lines are taken whenever the header is good; the numbers only
// if the whole second line parses.
PhyFileStatus_e ReadPhysicalDisplayFile(const std::string &fileName, PhysicalDisplay_s *phy);
bool WritePhysicalDisplayFile(const std::string &fileName, const PhysicalDisplay_s &phy);

// Reads the file at start-up with its messages. In batch mode the work-area size and dot pitch
// take the file's numbers (or stay at 800 by 600 at 38.0 dots per cm).
void LoadPhysicalDisplayFile();
