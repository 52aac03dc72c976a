// The octree quantiser. A colour walks down from the root taking bit 7-k of R, G and B at level k
// as child number R*4 + G*2 + B; a node made at level 8 is a leaf (one colour). Internal nodes,
// levels 0 to 7, sit on the reducible list of their level; leaves are on no list. Whenever there
// are more leaves than allowed, the internal node of the deepest level whose children hold the
// fewest pixels absorbs its children and becomes a leaf. Every internal node lies on the path to
// some leaf, so at most 8 nodes per leaf and the root are ever in use and the full pool never runs
// dry; a smaller pool that does is met the same way: merge, then walk again.
#include "base/output/colorquant.h"

#include <algorithm>
#include <cstring>

#include "base/kernel/alloc.h"
#include "base/kernel/errors.h"
#include "base/kernel/orvassert.h"

namespace {

constexpr int MaxTreeDepth = 8;

struct ColorNode_s {
    uint64_t PixelCount;
    uint64_t SumR, SumG, SumB;
    ColorNode_s *Child[8];
    ColorNode_s *NextReducible, *PrevReducible;
    bool IsLeaf;
    int Level;
    int PaletteSlot;  // order of the leaf in the tree walk; the sorted index is in the palette table
};

struct PaletteEntry_s {
    uint8_t R, G, B;
    int Index;  // position of this slot's colour in the sorted palette
};

}  // namespace

struct ColorQuantization_s {
    ColorNode_s *Root;
    PaletteEntry_s Palette[ColorQuantizationPaletteSize];  // by slot
    uint8_t SortedRGB[ColorQuantizationPaletteSize][3];    // by palette index
    int MaxColors;
    int NumLeaves;
    ColorNode_s *Reducible[MaxTreeDepth];  // levels 0 to 7
    ColorNode_s *Pool;
    ColorNode_s *FreeList;  // linked through Child[0]
    bool PaletteIsCreated;
};

namespace {

void linkReducible(ColorQuantization_s *q, ColorNode_s *node) {
    ColorNode_s *&head = q->Reducible[node->Level];
    node->PrevReducible = nullptr;
    node->NextReducible = head;
    if (head != nullptr) head->PrevReducible = node;
    head = node;
}

void unlinkReducible(ColorQuantization_s *q, ColorNode_s *node) {
    if (node->PrevReducible != nullptr)
        node->PrevReducible->NextReducible = node->NextReducible;
    else
        q->Reducible[node->Level] = node->NextReducible;
    if (node->NextReducible != nullptr) node->NextReducible->PrevReducible = node->PrevReducible;
    node->NextReducible = node->PrevReducible = nullptr;
}

// A node from the pool; the caller makes sure the pool is not empty.
ColorNode_s *newNode(ColorQuantization_s *q, int level) {
    ColorNode_s *node = q->FreeList;
    CHECK(node != nullptr);
    q->FreeList = node->Child[0];
    memset(node, 0, sizeof(*node));
    node->Level = level;
    node->PaletteSlot = -1;
    if (level == MaxTreeDepth) {
        node->IsLeaf = true;
        q->NumLeaves++;
    } else {
        linkReducible(q, node);
    }
    return node;
}

void freeNode(ColorQuantization_s *q, ColorNode_s *node) {
    node->Child[0] = q->FreeList;
    q->FreeList = node;
}

uint64_t childPixels(const ColorNode_s *node) {
    uint64_t sum = 0;
    for (const ColorNode_s *child : node->Child)
        if (child != nullptr) sum += child->PixelCount;
    return sum;
}

// Merges the children of the cheapest node of the deepest non-empty reducible list into it. All
// children of that node are leaves, since an internal child would sit on a deeper list. The one
// exception is a node just made by a walk that found the pool empty: it has no child yet, costs
// nothing, and so becomes a leaf itself, where the walk then ends.
void reduce(ColorQuantization_s *q) {
    int level = MaxTreeDepth - 1;
    while (level >= 0 && q->Reducible[level] == nullptr) level--;
    CHECK(level >= 0);
    ColorNode_s *best = nullptr;
    uint64_t bestPixels = 0;
    for (ColorNode_s *node = q->Reducible[level]; node != nullptr; node = node->NextReducible) {
        uint64_t pixels = childPixels(node);
        if (best == nullptr || pixels < bestPixels) {
            best = node;
            bestPixels = pixels;
        }
    }
    unlinkReducible(q, best);
    int numChildren = 0;
    for (ColorNode_s *&child : best->Child) {
        if (child == nullptr) continue;
        CHECK(child->IsLeaf);
        best->PixelCount += child->PixelCount;
        best->SumR += child->SumR;
        best->SumG += child->SumG;
        best->SumB += child->SumB;
        freeNode(q, child);
        child = nullptr;
        numChildren++;
    }
    best->IsLeaf = true;
    q->NumLeaves -= numChildren - 1;
}

int childIndex(uint8_t r, uint8_t g, uint8_t b, int level) {
    int shift = 7 - level;
    return (((r >> shift) & 1) << 2) | (((g >> shift) & 1) << 1) | ((b >> shift) & 1);
}

void assignSlots(ColorQuantization_s *q, ColorNode_s *node, int *nextSlot) {
    if (node->IsLeaf) {
        CHECK(*nextSlot < ColorQuantizationPaletteSize);
        PaletteEntry_s &entry = q->Palette[*nextSlot];
        uint64_t count = node->PixelCount;
        if (count > 0) {
            entry.R = uint8_t((node->SumR + count / 2) / count);
            entry.G = uint8_t((node->SumG + count / 2) / count);
            entry.B = uint8_t((node->SumB + count / 2) / count);
        }
        node->PaletteSlot = (*nextSlot)++;
        return;
    }
    for (ColorNode_s *child : node->Child)
        if (child != nullptr) assignSlots(q, child, nextSlot);
}

uint32_t colorKey(const PaletteEntry_s &entry) {
    return (uint32_t(entry.R) << 16) | (uint32_t(entry.G) << 8) | entry.B;
}

}  // namespace

ColorQuantization_a BitImage_NewColorQuantization(int numColors, bool reportError) {
    return BitImage_NewColorQuantizationWithPool(numColors, ColorQuantizationPoolSize, reportError);
}

ColorQuantization_a BitImage_NewColorQuantizationWithPool(int numColors, int poolSize, bool reportError) {
    REQUIRE(numColors >= 1 && numColors <= ColorQuantizationPaletteSize);
    REQUIRE(poolSize >= 1);
    auto *q = static_cast<ColorQuantization_s *>(newmalloc(sizeof(ColorQuantization_s)));
    auto *pool = static_cast<ColorNode_s *>(q != nullptr ? newmalloc(sizeof(ColorNode_s) * size_t(poolSize)) : nullptr);
    if (pool == nullptr) {
        newfree(q);
        if (reportError) ErrMsg("Out of memory, unable to initialize color quantization");
        return nullptr;
    }
    memset(q, 0, sizeof(*q));
    q->MaxColors = numColors;
    q->Pool = pool;
    for (int i = poolSize - 1; i >= 0; i--) freeNode(q, &q->Pool[i]);
    q->Root = newNode(q, 0);
    return q;
}

void BitImage_DeleteColorQuantization(ColorQuantization_a *quantization) {
    REQUIRE(quantization != nullptr);
    if (*quantization != nullptr) newfree((*quantization)->Pool);
    newfree(*quantization);
    *quantization = nullptr;
}

void BitImage_AddColorToQuantization(ColorQuantization_a q, uint8_t r, uint8_t g, uint8_t b, uint32_t multiplicity) {
    REQUIRE(q != nullptr && !q->PaletteIsCreated);
    ColorNode_s *node = q->Root;
    while (!node->IsLeaf) {
        int index = childIndex(r, g, b, node->Level);
        if (node->Child[index] == nullptr) {
            if (q->FreeList == nullptr) {
                // Out of nodes: merge a group to free some, then walk again, since the merge may
                // have turned a node of this path into a leaf.
                reduce(q);
                node = q->Root;
                continue;
            }
            node->Child[index] = newNode(q, node->Level + 1);
        }
        node = node->Child[index];
    }
    node->PixelCount += multiplicity;
    node->SumR += uint64_t(r) * multiplicity;
    node->SumG += uint64_t(g) * multiplicity;
    node->SumB += uint64_t(b) * multiplicity;
    while (q->NumLeaves > q->MaxColors) reduce(q);
}

void BitImage_AddPlanerColorsToQuantization(ColorQuantization_a q, int count, const uint8_t *r, const uint8_t *g,
                                            const uint8_t *b) {
    int i = 0;
    while (i < count) {
        int j = i + 1;
        while (j < count && r[j] == r[i] && g[j] == g[i] && b[j] == b[i]) j++;
        BitImage_AddColorToQuantization(q, r[i], g[i], b[i], uint32_t(j - i));
        i = j;
    }
}

void BitImage_AddRGBColorsToQuantization(ColorQuantization_a q, int count, const uint8_t *rgb) {
    int i = 0;
    while (i < count) {
        const uint8_t *p = rgb + size_t(i) * 3;
        int j = i + 1;
        while (j < count && memcmp(rgb + size_t(j) * 3, p, 3) == 0) j++;
        BitImage_AddColorToQuantization(q, p[0], p[1], p[2], uint32_t(j - i));
        i = j;
    }
}

void BitImage_CreatePalette(ColorQuantization_a q) {
    REQUIRE(q != nullptr && !q->PaletteIsCreated);
    memset(q->Palette, 0, sizeof(q->Palette));
    int nextSlot = 0;
    assignSlots(q, q->Root, &nextSlot);
    // Sort all entries, the unused black ones too, by colour. Equal colours keep slot order, and the
    // used slots come first, so a real black takes index 0, ahead of the unused entries.
    int order[ColorQuantizationPaletteSize];
    for (int i = 0; i < ColorQuantizationPaletteSize; i++) order[i] = i;
    std::stable_sort(order, order + ColorQuantizationPaletteSize,
                     [q](int a, int b) { return colorKey(q->Palette[a]) < colorKey(q->Palette[b]); });
    for (int index = 0; index < ColorQuantizationPaletteSize; index++) {
        PaletteEntry_s &entry = q->Palette[order[index]];
        entry.Index = index;
        q->SortedRGB[index][0] = entry.R;
        q->SortedRGB[index][1] = entry.G;
        q->SortedRGB[index][2] = entry.B;
    }
    q->PaletteIsCreated = true;
}

int BitImage_GetPaletteSize(ColorQuantization_a q) {
    REQUIRE(q != nullptr);
    return ColorQuantizationPaletteSize;
}

int BitImage_GetNumQuantizedColors(ColorQuantization_a q) {
    REQUIRE(q != nullptr);
    return q->NumLeaves;
}

void BitImage_GetColorPaletteRGB(ColorQuantization_a q, int index, uint8_t *r, uint8_t *g, uint8_t *b) {
    REQUIRE(q != nullptr && q->PaletteIsCreated);
    REQUIRE(index >= 0 && index < ColorQuantizationPaletteSize);
    *r = q->SortedRGB[index][0];
    *g = q->SortedRGB[index][1];
    *b = q->SortedRGB[index][2];
}

int BitImage_GetPaletteIndex(ColorQuantization_a q, uint8_t r, uint8_t g, uint8_t b) {
    REQUIRE(q != nullptr && q->PaletteIsCreated);
    const ColorNode_s *node = q->Root;
    while (!node->IsLeaf) {
        const ColorNode_s *child = node->Child[childIndex(r, g, b, node->Level)];
        if (child == nullptr) return 0;  // a colour that was never added
        node = child;
    }
    return q->Palette[node->PaletteSlot].Index;
}
