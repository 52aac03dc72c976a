// Reading the numbers typed into dialog fields and macro values: a decimal value followed by an
// optional unit suffix, converted by a suffix converter into the units the field works in.
// Relies on: strutil, errors.
#pragma once

enum Suffix_e {
    Suffix_Cm = 0,
    Suffix_In = 1,
    Suffix_Pt = 2,
    Suffix_Pix = 3,
    Suffix_Pi = 4,
    Suffix_Unknown = 255
};

// Converts *value given with a suffix code into the caller's units; false rejects the suffix.
typedef bool (*ValueSuffixConverter_pf)(double *value, int suffix);

// The scales the converters need. The frames layer keeps them up to date with the paper and the
// current frame; until then they hold the defaults.
struct ValueUnitScales_s {
    double PaperDotsPerInch;   // dots of the screen per paper inch
    double PaperToFrameScale;  // frame units per paper inch
    double FrameScale;         // the current frame's own scale
};
extern ValueUnitScales_s ValueUnitScales;

// Recognises CM, IN, PT, PIX or PI (any case, after optional blanks) followed by a blank or the end
// and moves the cursor past it; Suffix_Unknown leaves the cursor as it was.
int ParseSuffix(const char **cursor);

// Reads *text (a newmalloc'd string). On failure *errorMessage points at one of "No Value Entered",
// "Suffix not allowed", "Invalid Value", "Invalid Integer Value" or "Invalid Suffix". A value beyond
// the floating point limits is clipped: *text is then replaced by "0.0", "1.0E150" or "-1.0E150"
// and a warning is shown. suffixConverter may be null: then no suffix is allowed. hadSuffix,
// clipped and errorMessage may be null.
bool ParseStringForValue(char **text, double *value, bool mustBeInteger, ValueSuffixConverter_pf suffixConverter,
                         bool *hadSuffix, bool *clipped, const char **errorMessage);

bool ModifyXValueWithSuffixToFrameUnits(double *value, int suffix);
bool ModifyYValueWithSuffixToFrameUnits(double *value, int suffix);
bool ModifyXValueWithSuffixToInchPaperUnits(double *value, int suffix);
bool ModifyYValueWithSuffixToInchPaperUnits(double *value, int suffix);
bool ModifyXValueWithSuffixToCmPaperUnits(double *value, int suffix);
bool ModifyYValueWithSuffixToCmPaperUnits(double *value, int suffix);
bool ModifyXValueWithSuffixToPointPaperUnits(double *value, int suffix);
bool ModifyYValueWithSuffixToPointPaperUnits(double *value, int suffix);
bool MultiplyValueWithPiSuffixByPi(double *value, int suffix);
