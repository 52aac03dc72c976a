// The version text and the banner. __DATE__/__TIME__ stay in this one small unit so that the
// compiler cache keeps every other object of the library.
#include "base/kernel/version.h"

#include <cstdio>

char VersionStr[32] = "";

const char *OrvanexBuildTime() { return __TIME__; }
const char *OrvanexBuildDate() { return __DATE__; }

void Initializing() {
    snprintf(VersionStr, sizeof(VersionStr), "%d.%d-%d-%d", OrvanexMajorVersion, OrvanexMinorVersion,
             OrvanexRevision, OrvanexBuild);
    printf("Orvanex %s - %s  %s\n", VersionStr, OrvanexBuildTime(), OrvanexBuildDate());
    fflush(stdout);
}

bool OrvanexGetVersion(const char *versionText, int16_t *major, int16_t *minor, int16_t *revision, int16_t *build) {
    if (versionText == nullptr) return false;
    int values[4];
    int consumed = 0;
    if (sscanf(versionText, "%d.%d-%d-%d%n", &values[0], &values[1], &values[2], &values[3], &consumed) != 4 ||
        versionText[consumed] != '\0')
        return false;
    for (int v : values)
        if (v < 0 || v > INT16_MAX) return false;
    *major = static_cast<int16_t>(values[0]);
    *minor = static_cast<int16_t>(values[1]);
    *revision = static_cast<int16_t>(values[2]);
    *build = static_cast<int16_t>(values[3]);
    return true;
}
