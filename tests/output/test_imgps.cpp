// PostScript pictures: the EPS comments and procedures, the packed hex rows decoded here, and the
// page rendered by Ghostscript back to the same pixels, upright and in landscape; gray pages for a
// monochrome palette.
#include <gtest/gtest.h>

#include <sstream>

#include "base/output/imgps.h"
#include "image_fixture.h"

namespace {

using namespace imagetest;

class PSImageExport : public ImageTest {
  protected:
    void SetUp() override {
        ImageTest::SetUp();
        // 72 pixels to the inch: one pixel per point.
        Log.Size.Width = 13.0 / 72.0;
        Log.Size.Height = 7.0 / 72.0;
    }
    std::string exportPS(const char *file, Palette_e palette) {
        std::string name = path(file);
        FILE *f = fopen(name.c_str(), "wb");
        EXPECT_NE(f, nullptr);
        EXPECT_TRUE(ExportPSImage(f, ExportRegion_CurrentFrame, 13, palette));
        fclose(f);
        return name;
    }
    // Ghostscript's rendering at 72 dots per inch as rows of RGB.
    std::vector<std::vector<RGB>> render(const std::string &name, int *width, int *height) {
        std::string ppm = path("page.ppm");
        gsOutput = RunCommand("gs -q -dSAFER -dNOPAUSE -dBATCH -dEPSCrop -r72 -sDEVICE=ppmraw -sOutputFile='" + ppm +
                              "' '" + name + "' 2>&1");
        std::vector<uint8_t> b = ReadFile(ppm);
        std::vector<std::vector<RGB>> rows;
        // "P6", width, height, the largest value, each after blanks or "#" comment lines.
        std::vector<std::string> fields;
        size_t at = 0;
        while (fields.size() < 4 && at < b.size()) {
            if (b[at] == '#') {
                while (at < b.size() && b[at] != '\n') at++;
            } else if (isspace(b[at])) {
                at++;
            } else {
                std::string field;
                while (at < b.size() && !isspace(b[at])) field.push_back(char(b[at++]));
                fields.push_back(field);
            }
        }
        if (fields.size() < 4 || fields[0] != "P6" || fields[3] != "255") return rows;
        *width = std::stoi(fields[1]);
        *height = std::stoi(fields[2]);
        at++;  // the one blank after the largest value
        if (b.size() < at + size_t(*width) * size_t(*height) * 3) return rows;
        for (int y = 0; y < *height; y++) {
            std::vector<RGB> row;
            for (int x = 0; x < *width; x++, at += 3) row.push_back({b.at(at), b.at(at + 1), b.at(at + 2)});
            rows.push_back(row);
        }
        return rows;
    }
    std::string gsOutput;
};

std::vector<uint8_t> encode(const std::vector<uint8_t> &row) {
    std::vector<uint8_t> out(2 * row.size() + 2);
    out.resize(PSImage_EncodeRow(row.data(), int(row.size()), out.data()));
    return out;
}

// Packets as the page's unpack procedure reads them.
std::vector<uint8_t> unpack(const std::vector<uint8_t> &in, size_t &at, size_t numBytes) {
    std::vector<uint8_t> out;
    while (out.size() < numBytes) {
        uint8_t n = in.at(at++);
        if (n < 128) {
            for (int k = 0; k <= n; k++) out.push_back(in.at(at++));
        } else {
            out.insert(out.end(), size_t(n) - 126, in.at(at++));
        }
    }
    return out;
}

std::vector<std::string> lines(const std::string &text) {
    std::vector<std::string> result;
    std::istringstream in(text);
    std::string line;
    while (std::getline(in, line)) result.push_back(line);
    return result;
}

// The hex data after the image operator line, as bytes.
std::vector<uint8_t> hexData(const std::vector<std::string> &all, const std::string &operatorWord) {
    std::vector<uint8_t> bytes;
    bool inData = false;
    for (const std::string &line : all) {
        if (inData) {
            if (line == "grestore") break;
            for (size_t i = 0; i + 1 < line.size(); i += 2) bytes.push_back(uint8_t(std::stoi(line.substr(i, 2), nullptr, 16)));
        } else if (line.size() >= operatorWord.size() && line.compare(line.size() - operatorWord.size(), operatorWord.size(), operatorWord) == 0) {
            inData = true;
        }
    }
    return bytes;
}

TEST(PSImagePackets, RunsAndLiterals) {
    EXPECT_EQ(encode({5, 5, 5}), (std::vector<uint8_t>{129, 5}));  // 3 repeats: 126 + 3
    EXPECT_EQ(encode({1, 2, 3}), (std::vector<uint8_t>{2, 1, 2, 3}));
    EXPECT_EQ(encode({1, 2, 2}), (std::vector<uint8_t>{0, 1, 128, 2}));
    EXPECT_EQ(encode(std::vector<uint8_t>(129, 4)), (std::vector<uint8_t>{255, 4}));
    EXPECT_EQ(encode(std::vector<uint8_t>(130, 4)), (std::vector<uint8_t>{255, 4, 0, 4}));
    std::vector<uint8_t> row;
    for (int i = 0; i < 300; i++) row.push_back(uint8_t(i % 7 == 0 ? 9 : i));
    std::vector<uint8_t> packed = encode(row);
    size_t at = 0;
    EXPECT_EQ(unpack(packed, at, row.size()), row);
    EXPECT_EQ(at, packed.size());
}

TEST_F(PSImageExport, ColourPageCommentsProceduresAndPlanes) {
    GeneralBase.Paper.OrientPortrait = true;
    std::string name = exportPS("a.eps", Palette_Color);
    std::vector<uint8_t> b = ReadFile(name);
    std::vector<std::string> all = lines(std::string(b.begin(), b.end()));
    ASSERT_GT(all.size(), 10u);
    EXPECT_EQ(all[0], "%!PS-Adobe-3.0 EPSF-3.0");
    EXPECT_EQ(all[1], "%%BoundingBox: 0 0 13 7");
    EXPECT_EQ(all[2], "%%Title: Orvanex PS Bit Image");
    std::string text(b.begin(), b.end());
    size_t comments = text.find("%%EndComments\n"), prolog = text.find("%%EndProlog\n"), page = text.find("%%Page: 1 1\n");
    ASSERT_NE(comments, std::string::npos);
    EXPECT_LT(comments, prolog);
    EXPECT_LT(prolog, page);
    for (const char *word : {"/read_next_byte", "/unpack", "/planar_to_rgb"}) EXPECT_NE(text.find(word), std::string::npos) << word;
    EXPECT_NE(text.find("\n0.000000 0.000000 translate\n13.000000 7.000000 scale\n"), std::string::npos);
    EXPECT_EQ(text.find("rotate"), std::string::npos);
    EXPECT_NE(text.find("false 3 colorimage\n"), std::string::npos);
    EXPECT_NE(text.find("showpage\n%%Trailer\n"), std::string::npos);

    std::vector<uint8_t> data = hexData(all, "colorimage");
    size_t at = 0;
    for (int y = 0; y < 7; y++) {
        std::vector<uint8_t> r = unpack(data, at, 13), g = unpack(data, at, 13), bl = unpack(data, at, 13);
        for (int x = 0; x < 13; x++) EXPECT_EQ((RGB{r[x], g[x], bl[x]}), expected(x, y)) << x << "," << y;
    }
    EXPECT_EQ(at, data.size());

    int width = 0, height = 0;
    std::vector<std::vector<RGB>> page2 = render(name, &width, &height);
    ASSERT_EQ(width, 13) << gsOutput;
    ASSERT_EQ(height, 7);
    for (int y = 0; y < 7; y++)
        for (int x = 0; x < 13; x++) EXPECT_EQ(page2[y][x], expected(x, y)) << x << "," << y;
}

TEST_F(PSImageExport, LandscapePagesTurnThePicture) {
    GeneralBase.Paper.OrientPortrait = false;
    Log.Pattern = StripePattern;
    std::string name = exportPS("l.eps", Palette_Color);
    std::vector<uint8_t> b = ReadFile(name);
    std::string text(b.begin(), b.end());
    EXPECT_NE(text.find("%%BoundingBox: 0 0 7 13\n"), std::string::npos);
    EXPECT_NE(text.find("\n7.000000 0.000000 translate\n90.0 rotate\n13.000000 7.000000 scale\n"), std::string::npos);
    int width = 0, height = 0;
    std::vector<std::vector<RGB>> page = render(name, &width, &height);
    ASSERT_EQ(width, 7) << gsOutput;
    ASSERT_EQ(height, 13);
    // Turned a quarter to the left: the picture's top runs down the page's left edge.
    for (int y = 0; y < 7; y++)
        for (int x = 0; x < 13; x++) EXPECT_EQ(page[12 - x][y], expected(x, y)) << x << "," << y;
}

TEST_F(PSImageExport, MonochromePagesAreEightBitGray) {
    GeneralBase.Paper.OrientPortrait = true;
    std::string name = exportPS("m.eps", Palette_Monochrome);
    std::vector<uint8_t> b = ReadFile(name);
    std::string text(b.begin(), b.end());
    EXPECT_EQ(text.find("colorimage"), std::string::npos);
    EXPECT_EQ(text.find("/planar_to_rgb"), std::string::npos);
    EXPECT_NE(text.find("13 7 8 [13 0 0 -7 0 7] { gray_row unpack } image\n"), std::string::npos);
    std::vector<uint8_t> data = hexData(lines(text), " image");
    size_t at = 0;
    for (int y = 0; y < 7; y++) {
        std::vector<uint8_t> gray = unpack(data, at, 13);
        for (int x = 0; x < 13; x++) {
            RGB c = expected(x, y);
            EXPECT_EQ(gray[x], int(255.0 * ((0.3 * c.R + 0.59 * c.G + 0.11 * c.B) / 255.0) + 0.499));
        }
    }
    int width = 0, height = 0;
    std::vector<std::vector<RGB>> page = render(name, &width, &height);
    ASSERT_EQ(height, 7) << gsOutput;
    for (int y = 0; y < 7; y++)
        for (int x = 0; x < 13; x++) {
            RGB c = expected(x, y);
            uint8_t g = uint8_t(255.0 * ((0.3 * c.R + 0.59 * c.G + 0.11 * c.B) / 255.0) + 0.499);
            EXPECT_EQ(page[y][x], (RGB{g, g, g})) << x << "," << y;
        }
}

}  // namespace
