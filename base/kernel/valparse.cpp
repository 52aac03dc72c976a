// Values with unit suffixes. The suffix is the run of letters at the end of the text; the number
// before it is read by IsAReal (or IsALgIndex for integer fields) and then handed with the suffix
// code to the field's converter. Paper conversions go through inches; one point is 1/72 inch.
// Relies on: strutil, errors.
#include "base/kernel/valparse.h"

#include <cctype>
#include <cstring>
#include <string>

#include "base/kernel/errors.h"
#include "base/kernel/orvassert.h"
#include "base/kernel/strutil.h"
#include "base/kernel/types.h"

ValueUnitScales_s ValueUnitScales = {96.52, 1.0, 1.0};

namespace {

constexpr size_t kMaxSuffixLength = 7;
constexpr double kCmPerInch = 2.54;
constexpr double kPointsPerInch = 72.0;
constexpr double kCmPerPoint = 0.035277777777777776;
constexpr double kPointsPerCm = 28.346456692913385;
constexpr double kPi = 3.141592653589793;

const char *const kNoValueEntered = "No Value Entered";
const char *const kSuffixNotAllowed = "Suffix not allowed";
const char *const kInvalidValue = "Invalid Value";
const char *const kInvalidIntegerValue = "Invalid Integer Value";
const char *const kInvalidSuffix = "Invalid Suffix";

inline bool isLetter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

// Pixels count from 1: a value of 1 pixel is the origin.
inline double pixelsToInches(double pixels) { return (pixels - 1.0) / ValueUnitScales.PaperDotsPerInch; }

bool toInches(double *value, int suffix) {
    switch (suffix) {
        case Suffix_Cm: *value /= kCmPerInch; return true;
        case Suffix_In: return true;
        case Suffix_Pt: *value /= kPointsPerInch; return true;
        case Suffix_Pix: *value = pixelsToInches(*value); return true;
        default: return false;
    }
}

bool toCm(double *value, int suffix) {
    switch (suffix) {
        case Suffix_Cm: return true;
        case Suffix_In: *value *= kCmPerInch; return true;
        case Suffix_Pt: *value *= kCmPerPoint; return true;
        case Suffix_Pix: *value = pixelsToInches(*value) * kCmPerInch; return true;
        default: return false;
    }
}

bool toPoints(double *value, int suffix) {
    switch (suffix) {
        case Suffix_Cm: *value *= kPointsPerCm; return true;
        case Suffix_In: *value *= kPointsPerInch; return true;
        case Suffix_Pt: return true;
        case Suffix_Pix: *value = pixelsToInches(*value) * kPointsPerInch; return true;
        default: return false;
    }
}

bool toFrame(double *value, int suffix) {
    if (!toInches(value, suffix)) return false;
    *value *= ValueUnitScales.PaperToFrameScale * ValueUnitScales.FrameScale;
    return true;
}

}  // namespace

int ParseSuffix(const char **cursor) {
    REQUIRE(cursor != nullptr && *cursor != nullptr);
    const char *p = *cursor;
    while (*p == ' ') p++;
    // PIX before PI: the longer name must win.
    static const struct {
        const char *name;
        int code;
    } suffixes[] = {{"CM", Suffix_Cm}, {"IN", Suffix_In}, {"PT", Suffix_Pt}, {"PIX", Suffix_Pix}, {"PI", Suffix_Pi}};
    for (const auto &suffix : suffixes) {
        size_t length = strlen(suffix.name);
        if (ustrncmp(p, suffix.name, length) == 0 && (p[length] == ' ' || p[length] == '\0')) {
            *cursor = p + length;
            return suffix.code;
        }
    }
    return Suffix_Unknown;
}

bool ParseStringForValue(char **text, double *value, bool mustBeInteger, ValueSuffixConverter_pf suffixConverter,
                         bool *hadSuffix, bool *clipped, const char **errorMessage) {
    REQUIRE(text != nullptr && value != nullptr);
    // The out-parameters other than value may be null when the caller doesn't need them.
    bool hadSuffixLocal = false;
    bool clippedLocal = false;
    const char *errorMessageLocal = nullptr;
    if (hadSuffix == nullptr) hadSuffix = &hadSuffixLocal;
    if (clipped == nullptr) clipped = &clippedLocal;
    if (errorMessage == nullptr) errorMessage = &errorMessageLocal;
    *hadSuffix = false;
    *clipped = false;
    *errorMessage = nullptr;

    std::string number = *text != nullptr ? *text : "";
    while (!number.empty() && isspace(static_cast<unsigned char>(number.back()))) number.pop_back();
    size_t letters = number.size();
    while (letters > 0 && isLetter(number[letters - 1])) letters--;
    std::string suffix = number.substr(letters, kMaxSuffixLength);
    for (char &c : suffix) c = static_cast<char>(toupper(static_cast<unsigned char>(c)));
    number.erase(letters);
    number = Trim(number);

    if (number.empty()) {
        *errorMessage = kNoValueEntered;
        return false;
    }
    *hadSuffix = !suffix.empty();
    if (*hadSuffix && suffixConverter == nullptr) {
        *errorMessage = kSuffixNotAllowed;
        return false;
    }

    double parsed = 0.0;
    bool isClipped = false;
    if (!IsAReal(number.c_str(), &parsed, &isClipped)) {
        *errorMessage = kInvalidValue;
        return false;
    }
    // The text that replaces a clipped entry shows the limit the number was clipped to.
    const char *clipText = parsed > 0.0 ? "1.0E150" : (parsed < 0.0 ? "-1.0E150" : "0.0");
    if (mustBeInteger) {
        LgIndex_t integer;
        if (!IsALgIndex(number.c_str(), &integer)) {
            *errorMessage = kInvalidIntegerValue;
            return false;
        }
        parsed = integer;
    }

    if (*hadSuffix) {
        const char *cursor = suffix.c_str();
        int code = ParseSuffix(&cursor);
        if (!suffixConverter(&parsed, code)) {
            *errorMessage = kInvalidSuffix;
            return false;
        }
    }

    if (isClipped) {
        InternalResetString(text, clipText, true);
        Warning("The value entered exceeds the floating point limit and has been clipped");
        *clipped = true;
    }
    *value = parsed;
    return true;
}

bool ModifyXValueWithSuffixToFrameUnits(double *value, int suffix) { return toFrame(value, suffix); }

bool ModifyYValueWithSuffixToFrameUnits(double *value, int suffix) {
    // Frame Y runs the other way from paper Y.
    if (!toFrame(value, suffix)) return false;
    *value = -*value;
    return true;
}

bool ModifyXValueWithSuffixToInchPaperUnits(double *value, int suffix) { return toInches(value, suffix); }
bool ModifyYValueWithSuffixToInchPaperUnits(double *value, int suffix) { return toInches(value, suffix); }
bool ModifyXValueWithSuffixToCmPaperUnits(double *value, int suffix) { return toCm(value, suffix); }
bool ModifyYValueWithSuffixToCmPaperUnits(double *value, int suffix) { return toCm(value, suffix); }
bool ModifyXValueWithSuffixToPointPaperUnits(double *value, int suffix) { return toPoints(value, suffix); }
bool ModifyYValueWithSuffixToPointPaperUnits(double *value, int suffix) { return toPoints(value, suffix); }

bool MultiplyValueWithPiSuffixByPi(double *value, int suffix) {
    if (suffix != Suffix_Pi) return false;
    *value *= kPi;
    return true;
}
