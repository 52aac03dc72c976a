// The bit image state and its row pullers. Construction renders through the registered device
// (or takes a generic image), resamples a supersampled rendering when antialiasing is on, and
// for a palette image gathers every row into the quantiser, the background colour first so that
// it always has an entry. Rows are pulled from the device one at a time; only antialiasing keeps
// a whole picture in memory.
#include "base/output/bitimage.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "base/kernel/alloc.h"
#include "base/kernel/errors.h"
#include "base/kernel/genbase.h"
#include "base/kernel/globals.h"
#include "base/kernel/idle.h"
#include "base/kernel/orvassert.h"
#include "base/kernel/outofmem.h"
#include "base/kernel/strutil.h"
#include "base/kernel/version.h"
#include "base/macro/setvalue.h"
#include "base/output/imgresize.h"

bool BitImageInterrupted = false;
bool BitImageIOErrorFlag = false;

namespace {

constexpr int UnknownRegionImageWidth = 512;
constexpr double UnknownDotsPerInch = 72.0;
constexpr const char *DefaultQuantizationText = "Reducing the image to %d colors...";
constexpr const char *DefaultRenderText = "Rendering image...";

struct BitImageState_s {
    uint8_t *R, *G, *B;  // planar row buffers
    uint8_t *IndexRow;
    uint8_t *RGBRow;
    int Width, Height;
    BitImageType_e Type;
    int NumColors;  // palette size, or gray depth
    bool ReadFromGenericImage;
    GenericImage_a GenericImage;
    bool ShowProgress;
    long RowsDone, TotalRows;
    int LastPercent;
    ColorQuantization_a ColorQuantization;
    // Bookkeeping of the device and the region.
    bool DeviceNeedsRelease;
    bool UsedOffscreen;
    ExportRegionSize_s RegionSize;
    bool RegionSizeIsKnown;
};

BitImageState_s *State = nullptr;
BitImageDevice_s Device = {nullptr, nullptr, nullptr, nullptr};
int CachedImageHeight = 0;
int MostRecentRenderedImageHeight = 0;
char *QuantizationText = nullptr;
char *RenderText = nullptr;

void releaseDevice(BitImageState_s *state) {
    if (!state->DeviceNeedsRelease) return;
    state->DeviceNeedsRelease = false;
    if (Device.Release != nullptr) Device.Release(state->UsedOffscreen);
}

void freeState(BitImageState_s **state) {
    if (*state == nullptr) return;
    releaseDevice(*state);
    newfree((*state)->R);
    newfree((*state)->G);
    newfree((*state)->B);
    newfree((*state)->IndexRow);
    newfree((*state)->RGBRow);
    FreeGenericImage(&(*state)->GenericImage);
    BitImage_DeleteColorQuantization(&(*state)->ColorQuantization);
    newfree(*state);
    *state = nullptr;
}

// A state with its row buffers, or null after "Out of memory".
BitImageState_s *allocState(BitImageType_e type, int numColors, int width, int height) {
    auto *state = static_cast<BitImageState_s *>(newmalloc(sizeof(BitImageState_s)));
    if (state == nullptr) {
        OutOfMemoryMsg();
        return nullptr;
    }
    new (state) BitImageState_s{};
    state->Width = width;
    state->Height = height;
    state->Type = type;
    state->NumColors = numColors;
    state->LastPercent = -1;
    state->ShowProgress = !InBatchMode;
    state->R = static_cast<uint8_t *>(newmalloc(size_t(width)));
    state->G = static_cast<uint8_t *>(newmalloc(size_t(width)));
    state->B = static_cast<uint8_t *>(newmalloc(size_t(width)));
    state->IndexRow = static_cast<uint8_t *>(newmalloc(size_t(width)));
    state->RGBRow = static_cast<uint8_t *>(newmalloc(size_t(width) * 3));
    if (state->R == nullptr || state->G == nullptr || state->B == nullptr || state->IndexRow == nullptr ||
        state->RGBRow == nullptr) {
        freeState(&state);
        OutOfMemoryMsg();
        return nullptr;
    }
    return state;
}

// Fills State->RGBRow with a row, counting progress; false once the user interrupted.
bool pullRow(int row) {
    REQUIRE(State != nullptr && row >= 0 && row < State->Height);
    if (TimeOut.General) HandleGeneralTimeOut();
    if (Interrupted || BitImageInterrupted) {
        BitImageInterrupted = true;
        return false;
    }
    if (State->ReadFromGenericImage)
        memcpy(State->RGBRow, GetGenericImageRow(State->GenericImage, row), size_t(State->Width) * 3);
    else
        Device.GetRGBPixelRow(row, State->RGBRow);
    State->RowsDone++;
    if (State->ShowProgress && State->TotalRows > 0) {
        int percent = int(std::min(100L, 100 * State->RowsDone / State->TotalRows));
        if (percent != State->LastPercent) {
            State->LastPercent = percent;
            ImageProgress_SetPercentDone(percent);
        }
    }
    return true;
}

void splitPlanar(const uint8_t *rgb, int width, uint8_t *r, uint8_t *g, uint8_t *b) {
    for (int i = 0; i < width; i++) {
        r[i] = rgb[3 * i];
        g[i] = rgb[3 * i + 1];
        b[i] = rgb[3 * i + 2];
    }
}

void setText(char **slot, const char *text) {
    newfree(*slot);
    *slot = text != nullptr ? DupString(text) : nullptr;
}

// Renders through the device into the state; with antialiasing renders larger and resamples into
// a generic image that the state then reads.
bool renderThroughDevice(BitImageState_s *state, ExportRegion_e region) {
    const ExportSetup_s &setup = GeneralBase.ExportSetup;
    bool antialias = setup.UseSuperSampleAntiAliasing;
    bool useOffscreen = GeneralBase.Interface.UseOffscreenBitmap;
    if (antialias && !useOffscreen) {
        ErrMsg("Cannot export image.  Antialiasing for exported images requires use of an offscreen image.");
        return false;
    }
    if (Device.Render == nullptr || Device.GetRGBPixelRow == nullptr) {
        ErrMsg("Unable to render offscreen image.");
        return false;
    }
    int renderWidth = state->Width, renderHeight = state->Height;
    if (antialias) {
        double factor = std::max(1, setup.SuperSampleFactor);
        double w = (state->Width - 1) * factor + 1 + 0.499, h = (state->Height - 1) * factor + 1 + 0.499;
        if (w > 2147483647.0 || h > 2147483647.0) {
            ErrMsg("Not enough memory to perform antialiasing.  Use a smaller image size or a smaller "
                   "supersampling factor, or turn antialiasing off.");
            return false;
        }
        renderWidth = int(w);
        renderHeight = int(h);
    }

    ImageProgress_SetStatusText(RenderText != nullptr ? RenderText : DefaultRenderText);
    state->UsedOffscreen = useOffscreen;
    state->DeviceNeedsRelease = true;
    if (!Device.Render(region, renderWidth, renderHeight, useOffscreen)) {
        if (Interrupted) BitImageInterrupted = true;
        return false;
    }
    if (!antialias) return true;

    ImageProgress_SetStatusText("Resampling image for antialiasing...");
    const char *memoryText = "Not enough memory to perform antialiasing.  Use a smaller image size or a smaller "
                             "supersampling factor, or turn antialiasing off.";
    GenericImage_a rendered = AllocGenericImage(renderWidth, renderHeight, false);
    GenericImage_a resampled = rendered != nullptr ? AllocGenericImage(state->Width, state->Height, false) : nullptr;
    if (resampled == nullptr) {
        FreeGenericImage(&rendered);
        ErrMsg("%s", memoryText);
        return false;
    }
    for (int row = 0; row < renderHeight; row++) Device.GetRGBPixelRow(row, GetGenericImageRow(rendered, row));
    releaseDevice(state);
    bool ok = ResizeGenericImage(resampled, rendered, ImageResizeFilter_e(setup.ResizeFilter), state->ShowProgress, 0,
                                 100, &Interrupted);
    FreeGenericImage(&rendered);
    if (!ok) {
        FreeGenericImage(&resampled);
        if (Interrupted)
            BitImageInterrupted = true;
        else
            ErrMsg("%s", memoryText);
        return false;
    }
    state->GenericImage = resampled;
    state->ReadFromGenericImage = true;
    return true;
}

// Gathers the colours of a palette image and makes the palette.
bool quantize() {
    State->ColorQuantization = BitImage_NewColorQuantization(State->NumColors, true);
    if (State->ColorQuantization == nullptr) return false;
    if (QuantizationText != nullptr) {
        ImageProgress_SetStatusText(QuantizationText);
    } else {
        char *text = FormatString(DefaultQuantizationText, State->NumColors);
        ImageProgress_SetStatusText(text);
        newfree(text);
    }
    uint8_t r, g, b;
    BitImage_GetBackgroundColorRGB(&r, &g, &b);
    BitImage_AddColorToQuantization(State->ColorQuantization, r, g, b, 1);
    for (int row = 0; row < State->Height; row++) {
        if (!BitImage_GetRGBPlanarPixelRow(row, State->R, State->G, State->B)) return false;
        BitImage_AddPlanerColorsToQuantization(State->ColorQuantization, State->Width, State->R, State->G, State->B);
    }
    BitImage_CreatePalette(State->ColorQuantization);
    return true;
}

// The common end of both constructions: counts, and the palette.
bool finishConstruction() {
    State->TotalRows = State->Type == BitImageType_ColorPalette ? 2L * State->Height : State->Height;
    if (State->Type == BitImageType_ColorPalette && !quantize()) {
        freeState(&State);
        return false;
    }
    MostRecentRenderedImageHeight = State->Height;
    return true;
}

}  // namespace

void BitImage_RegisterDevice(const BitImageDevice_s *device) {
    Device = device != nullptr ? *device : BitImageDevice_s{nullptr, nullptr, nullptr, nullptr};
}

// ---- size -------------------------------------------------------------------------------------

int ExportImageHeightForRegionSize(ExportRegion_e region, int width, const ExportRegionSize_s &size) {
    REQUIRE(width >= 1);
    double height;
    if (region == ExportRegion_WorkArea) {
        if (size.UsableWidth <= 1 || size.UsableHeight < 1) return width;
        height = double(width - 1) * (size.UsableHeight - 1) / (size.UsableWidth - 1) + 1.0;
    } else {
        if (size.Width <= 0.0 || size.Height <= 0.0) return width;
        height = double(width - 1) * size.JDotsPerIDots * size.Height / size.Width + 1.0;
    }
    height += 0.499;
    if (height >= 2147483647.0) return 2147483647;
    return std::max(1, int(height));
}

int BitImage_GetExportImageHeight(ExportRegion_e region, int width) {
    if (CachedImageHeight > 0) return CachedImageHeight;
    ExportRegionSize_s size;
    if (Device.GetRegionSize == nullptr || !Device.GetRegionSize(region, &size)) return width;
    return ExportImageHeightForRegionSize(region, width, size);
}

int BitImage_GetDefaultExportImageWidth(ExportRegion_e region) {
    if (InBatchMode) return GeneralBase.ExportSetup.ImageWidth;
    ExportRegionSize_s size;
    if (int(region) > ExportRegion_WorkArea || Device.GetRegionSize == nullptr ||
        !Device.GetRegionSize(region, &size))
        return UnknownRegionImageWidth;
    int width = region == ExportRegion_WorkArea ? size.UsableWidth + 1 : std::min(size.OnScreenWidth, size.UsableWidth);
    if (size.ScreenWidth > 0) width = std::min(width, size.ScreenWidth);
    // Only this width, offered to the user, keeps to the image dimension range; IMAGEWIDTH itself
    // may be as small as 1.
    return std::max(int(ImageDimensionInputSpec.Min), width);
}

void BitImage_SetCachedImageHeight(int height) { CachedImageHeight = std::max(0, height); }
void BitImage_ClearCachedImageHeight() { CachedImageHeight = 0; }
int BitImage_GetMostRecentRenderedImageHeight() { return MostRecentRenderedImageHeight; }

// ---- the state --------------------------------------------------------------------------------

bool BitImage_ConstructAndRenderBitImage(BitImageType_e type, int numColors, ExportRegion_e region, int width,
                                         int height) {
    REQUIRE(State == nullptr);
    REQUIRE(width >= 1 && height >= 1);
    REQUIRE(type != BitImageType_ColorPalette || (numColors >= 1 && numColors <= ColorQuantizationPaletteSize));
    REQUIRE(type != BitImageType_GrayScale || (numColors >= 0 && numColors <= 8));
    BitImageInterrupted = false;
    State = allocState(type, numColors, width, height);
    if (State == nullptr) return false;
    if (Device.GetRegionSize != nullptr) State->RegionSizeIsKnown = Device.GetRegionSize(region, &State->RegionSize);
    if (!renderThroughDevice(State, region)) {
        freeState(&State);
        return false;
    }
    return finishConstruction();
}

bool BitImage_ConstructFromGenericImage(BitImageType_e type, int numColors, GenericImage_a image) {
    REQUIRE(State == nullptr && image != nullptr);
    REQUIRE(type != BitImageType_ColorPalette || (numColors >= 1 && numColors <= ColorQuantizationPaletteSize));
    REQUIRE(type != BitImageType_GrayScale || (numColors >= 0 && numColors <= 8));
    BitImageInterrupted = false;
    State = allocState(type, numColors, GetGenericImageWidth(image), GetGenericImageHeight(image));
    if (State == nullptr) return false;
    State->GenericImage = CopyGenericImage(image, CopyMode_Reference);
    State->ReadFromGenericImage = true;
    return finishConstruction();
}

void BitImage_DestroyBitImage() {
    freeState(&State);
    ImageProgress_SetStatusText(nullptr);
}

bool BitImage_IsConstructed() { return State != nullptr; }

int BitImage_GetImageWidth() {
    REQUIRE(State != nullptr);
    return State->Width;
}

int BitImage_GetImageHeight() {
    REQUIRE(State != nullptr);
    return State->Height;
}

BitImageType_e BitImage_GetImageType() {
    REQUIRE(State != nullptr);
    return State->Type;
}

int BitImage_GetNumColors() {
    REQUIRE(State != nullptr);
    return State->NumColors;
}

double BitImage_GetJDotsPerInch() {
    REQUIRE(State != nullptr);
    if (!State->RegionSizeIsKnown || State->RegionSize.Height <= 0.0) return UnknownDotsPerInch;
    return State->Height / State->RegionSize.Height;
}

bool BitImage_GetRGBPlanarPixelRow(int row, uint8_t *r, uint8_t *g, uint8_t *b) {
    if (!pullRow(row)) return false;
    splitPlanar(State->RGBRow, State->Width, r, g, b);
    return true;
}

bool BitImage_GetRGBPixelRow(int row, uint8_t *rgb) {
    if (!pullRow(row)) return false;
    memcpy(rgb, State->RGBRow, size_t(State->Width) * 3);
    return true;
}

bool BitImage_GetIndexedPixelRow(int row, uint8_t *index) {
    REQUIRE(State != nullptr && State->Type != BitImageType_RGB);
    if (!pullRow(row)) return false;
    const uint8_t *rgb = State->RGBRow;
    if (State->Type == BitImageType_ColorPalette) {
        // Neighbours of one colour share the walk down the tree.
        int last = -1;
        for (int i = 0; i < State->Width; i++, rgb += 3) {
            if (last < 0 || memcmp(rgb, rgb - 3, 3) != 0)
                last = BitImage_GetPaletteIndex(State->ColorQuantization, rgb[0], rgb[1], rgb[2]);
            index[i] = uint8_t(last);
        }
    } else {
        for (int i = 0; i < State->Width; i++, rgb += 3)
            index[i] = uint8_t(BitImage_GetGrayFromRGB(State->NumColors, rgb[0], rgb[1], rgb[2]));
    }
    return true;
}

// ---- colours ----------------------------------------------------------------------------------

void BitImage_GetBackgroundColorRGB(uint8_t *r, uint8_t *g, uint8_t *b) {
    int color = GeneralBase.Paper.BackgroundColor;
    if (color < 0 || color >= NumBasicColors) color = 7;  // WHITE
    const RGB_s &rgb = GeneralBase.BasicColor[size_t(color)];
    *r = uint8_t(std::clamp<int>(rgb.R, 0, 255));
    *g = uint8_t(std::clamp<int>(rgb.G, 0, 255));
    *b = uint8_t(std::clamp<int>(rgb.B, 0, 255));
}

int BitImage_GetBackgroundColorIndex() {
    uint8_t r, g, b;
    BitImage_GetBackgroundColorRGB(&r, &g, &b);
    return BitImage_GetExportPaletteIndex(r, g, b);
}

int BitImage_GetGrayFromRGB(int depth, uint8_t r, uint8_t g, uint8_t b) {
    REQUIRE(depth >= 0 && depth <= 8);
    if (depth == 0) {
        uint8_t br, bg, bb;
        BitImage_GetBackgroundColorRGB(&br, &bg, &bb);
        return (r == br && g == bg && b == bb) ? 1 : 0;
    }
    double gray = (0.3 * r + 0.59 * g + 0.11 * b) / 255.0;
    int level = int(255.0 * gray + 0.499);
    switch (depth) {
    case 1: return gray >= 0.5 ? 1 : 0;
    case 2:
        for (int k = 1; k <= 3; k++)
            if (level < 64 * k) return k - 1;
        return 3;
    case 4: return level / 16;
    case 8: return level;
    default: return level >> (8 - depth);
    }
}

int BitImage_GetExportPaletteSize() {
    REQUIRE(State != nullptr && State->Type != BitImageType_RGB);
    if (State->Type == BitImageType_ColorPalette) return BitImage_GetPaletteSize(State->ColorQuantization);
    return State->NumColors == 0 ? 2 : 1 << State->NumColors;
}

int BitImage_GetExportPaletteIndex(uint8_t r, uint8_t g, uint8_t b) {
    REQUIRE(State != nullptr && State->Type != BitImageType_RGB);
    if (State->Type == BitImageType_ColorPalette) return BitImage_GetPaletteIndex(State->ColorQuantization, r, g, b);
    return BitImage_GetGrayFromRGB(State->NumColors, r, g, b);
}

void BitImage_GetExportColorPaletteRGB(int index, uint8_t *r, uint8_t *g, uint8_t *b) {
    REQUIRE(State != nullptr && State->Type != BitImageType_RGB);
    REQUIRE(index >= 0 && index < BitImage_GetExportPaletteSize());
    if (State->Type == BitImageType_ColorPalette) {
        BitImage_GetColorPaletteRGB(State->ColorQuantization, index, r, g, b);
        return;
    }
    int depth = std::max(1, State->NumColors);
    int level = index * 255 / ((1 << depth) - 1);  // 0/255, k * 85, k * 17, k
    *r = *g = *b = uint8_t(level);
}

void BitImage_SetColorQuantizationProgressText(const char *text) { setText(&QuantizationText, text); }
void BitImage_SetImageRenderProgressText(const char *text) { setText(&RenderText, text); }

// ---- guarded file helpers ---------------------------------------------------------------------

size_t BitImage_fwrite(const void *buffer, size_t size, size_t count, FILE *file) {
    if (BitImageIOErrorFlag) return 0;
    size_t written = fwrite(buffer, size, count, file);
    if (written != count) BitImageIOErrorFlag = true;
    return written;
}

size_t BitImage_fread(void *buffer, size_t size, size_t count, FILE *file) {
    size_t read = fread(buffer, size, count, file);
    if (read != count) BitImageIOErrorFlag = true;
    return read;
}

bool BitImage_fseek(FILE *file, long offset, int whence) {
    if (fseek(file, offset, whence) == 0) return true;
    BitImageIOErrorFlag = true;
    return false;
}

long BitImage_ftell(FILE *file) {
    long position = ftell(file);
    if (position < 0) BitImageIOErrorFlag = true;
    return position;
}

void BitImage_Write1ByteInt(FILE *file, uint8_t value) { BitImage_fwrite(&value, 1, 1, file); }

void BitImage_Write2ByteInt(FILE *file, uint16_t value, bool littleEndian) {
    uint8_t bytes[2];
    if (littleEndian) {
        bytes[0] = uint8_t(value);
        bytes[1] = uint8_t(value >> 8);
    } else {
        bytes[0] = uint8_t(value >> 8);
        bytes[1] = uint8_t(value);
    }
    BitImage_fwrite(bytes, 1, 2, file);
}

void BitImage_Write4ByteInt(FILE *file, uint32_t value, bool littleEndian) {
    uint8_t bytes[4];
    for (int i = 0; i < 4; i++) bytes[littleEndian ? i : 3 - i] = uint8_t(value >> (8 * i));
    BitImage_fwrite(bytes, 1, 4, file);
}

uint16_t BitImage_Read2ByteInt(FILE *file, bool littleEndian) {
    uint8_t bytes[2] = {0, 0};
    BitImage_fread(bytes, 1, 2, file);
    return littleEndian ? uint16_t(bytes[0] | (bytes[1] << 8)) : uint16_t((bytes[0] << 8) | bytes[1]);
}

uint32_t BitImage_Read4ByteInt(FILE *file, bool littleEndian) {
    uint8_t bytes[4] = {0, 0, 0, 0};
    BitImage_fread(bytes, 1, 4, file);
    uint32_t value = 0;
    for (int i = 0; i < 4; i++) value |= uint32_t(bytes[littleEndian ? i : 3 - i]) << (8 * i);
    return value;
}

const char *BitImage_VersionText() {
    if (VersionStr[0] != '\0') return VersionStr;
    static char version[32];
    snprintf(version, sizeof(version), "%d.%d-%d-%d", OrvanexMajorVersion, OrvanexMinorVersion, OrvanexRevision,
             OrvanexBuild);
    return version;
}

const char *BitImage_CreatorText() {
    static char text[96];
    snprintf(text, sizeof(text), "Created with Orvanex Version %s (Unix)", BitImage_VersionText());
    return text;
}
