// The version of the program: major 11, minor 0, with a revision and a build number.
// The version identifier reads "%d.%d-%d-%d" (major, minor, revision, build).
#pragma once

#include <cstdint>

constexpr int ORVANEXVERSION = 110;      // major * 10 + minor
constexpr int OrvanexMajorVersion = 11;
constexpr int OrvanexMinorVersion = 0;
constexpr int OrvanexRevision = 0;
constexpr int OrvanexBuild = 1;
constexpr const char *OrvanexPlatform = "LINUX64";

// "11.0-0-1": filled by Initializing at start-up.
extern char VersionStr[32];

// Fills VersionStr and prints the banner line "Orvanex <version> - <time>  <date>".
void Initializing();

// Parses a version identifier back into its four numbers; leading zeros are allowed.
bool OrvanexGetVersion(const char *versionText, int16_t *major, int16_t *minor, int16_t *revision, int16_t *build);

// Build time and date of this library, for the banner and image metadata.
const char *OrvanexBuildTime();
const char *OrvanexBuildDate();
