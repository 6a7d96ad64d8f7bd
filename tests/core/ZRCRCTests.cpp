#include <zrbase/core/ZRCRC.h>

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace {

const std::string checkText = "123456789";

struct Catalogued {
    const char* name;
    uint32_t width, polynomial, initialValue;
    bool reflectInput, reflectOutput;
    uint32_t xorValue, check;
};

// Parameter sets and check values ("123456789") as published in the catalogue of CRC parameter sets.
const Catalogued catalogue[] = {
    { "CRC-3/GSM", 3, 0x3, 0x0, false, false, 0x7, 0x4 },
    { "CRC-3/ROHC", 3, 0x3, 0x7, true, true, 0x0, 0x6 },
    { "CRC-4/G-704", 4, 0x3, 0x0, true, true, 0x0, 0x7 },
    { "CRC-4/INTERLAKEN", 4, 0x3, 0xF, false, false, 0xF, 0xB },
    { "CRC-5/USB", 5, 0x05, 0x1F, true, true, 0x1F, 0x19 },
    { "CRC-6/CDMA2000-A", 6, 0x27, 0x3F, false, false, 0x00, 0x0D },
    { "CRC-7/MMC", 7, 0x09, 0x00, false, false, 0x00, 0x75 },
    { "CRC-7/ROHC", 7, 0x4F, 0x7F, true, true, 0x00, 0x53 },
    { "CRC-8/SMBUS", 8, 0x07, 0x00, false, false, 0x00, 0xF4 },
    { "CRC-8/MAXIM-DOW", 8, 0x31, 0x00, true, true, 0x00, 0xA1 },
    { "CRC-10/ATM", 10, 0x233, 0x000, false, false, 0x000, 0x199 },
    { "CRC-12/UMTS", 12, 0x80F, 0x000, false, true, 0x000, 0xDAF },
    { "CRC-15/CAN", 15, 0x4599, 0x0000, false, false, 0x0000, 0x059E },
    { "CRC-16/ARC", 16, 0x8005, 0x0000, true, true, 0x0000, 0xBB3D },
    { "CRC-16/XMODEM", 16, 0x1021, 0x0000, false, false, 0x0000, 0x31C3 },
    { "CRC-16/IBM-3740", 16, 0x1021, 0xFFFF, false, false, 0x0000, 0x29B1 },
    { "CRC-16/KERMIT", 16, 0x1021, 0x0000, true, true, 0x0000, 0x2189 },
    { "CRC-21/CAN-FD", 21, 0x102899, 0x000000, false, false, 0x000000, 0x0ED841 },
    { "CRC-24/OPENPGP", 24, 0x864CFB, 0xB704CE, false, false, 0x000000, 0x21CF02 },
    { "CRC-24/BLE", 24, 0x00065B, 0x555555, true, true, 0x000000, 0xC25A56 },
    { "CRC-31/PHILIPS", 31, 0x04C11DB7, 0x7FFFFFFF, false, false, 0x7FFFFFFF, 0x0CE9E46C },
    { "CRC-32/ISO-HDLC", 32, 0x04C11DB7, 0xFFFFFFFF, true, true, 0xFFFFFFFF, 0xCBF43926 },
    { "CRC-32/BZIP2", 32, 0x04C11DB7, 0xFFFFFFFF, false, false, 0xFFFFFFFF, 0xFC891918 },
    { "CRC-32/ISCSI", 32, 0x1EDC6F41, 0xFFFFFFFF, true, true, 0xFFFFFFFF, 0xE3069283 },
    { "CRC-32/MPEG-2", 32, 0x04C11DB7, 0xFFFFFFFF, false, false, 0x00000000, 0x0376E6E7 },
    { "CRC-32/XFER", 32, 0x000000AF, 0x00000000, false, false, 0x00000000, 0xBD0BE338 },
};

void configure(ZRCRC& crc, const Catalogued& parameters)
{
    crc.setOrder(parameters.width);
    crc.setPolynomial(parameters.polynomial);
    crc.setDirect(true);
    crc.setInitialValue(parameters.initialValue);
    crc.setXorValue(parameters.xorValue);
    crc.setReflectInput(parameters.reflectInput);
    crc.setReflectOutput(parameters.reflectOutput);
}

// The CRC with each of the four methods; the table ones only where the width takes a table.
std::vector<uint32_t> allMethods(ZRCRC& crc, std::span<const uint8_t> bytes)
{
    std::vector<uint32_t> results;
    for (bool table : { false, true }) {
        for (bool fast : { false, true }) {
            crc.setUseTable(table);
            crc.setUseFast(fast);
            results.push_back(crc.crcForData(bytes));
        }
    }
    return results;
}

std::span<const uint8_t> bytesOf(const std::string& text)
{
    return { reinterpret_cast<const uint8_t*>(text.data()), text.size() };
}

}

TEST(ZRCRC, catalogueCheckValuesThroughEveryMethod)
{
    // One object for all of them: a table kept from an earlier parameter set would show here.
    ZRCRC crc;
    for (const Catalogued& parameters : catalogue) {
        configure(crc, parameters);
        for (uint32_t result : allMethods(crc, bytesOf(checkText)))
            EXPECT_EQ(result, parameters.check) << parameters.name;
    }
}

TEST(ZRCRC, presetsAndTheNonDirectInitialValue)
{
    ZRCRC crc;
    EXPECT_EQ(crc.crcForString(checkText), 0xCBF43926u);
    EXPECT_EQ(crc.crcForBuffer(nullptr, 0), 0u);
    ZRCRC ccitt = ZRCRC::crcForCCITT16();
    for (uint32_t result : allMethods(ccitt, bytesOf(checkText)))
        EXPECT_EQ(result, 0xCE3Cu);
    for (uint32_t result : allMethods(ccitt, {}))
        EXPECT_EQ(result, 0xFFFFu);

    // CRC-16/SPI-FUJITSU is catalogued with the direct initial value 0x1D0F, which is 0xFFFF in augmented form.
    ZRCRC fujitsu = ZRCRC::crcForCCITT16();
    fujitsu.setXorValue(0);
    fujitsu.setDirect(false);
    fujitsu.setInitialValue(0xFFFF);
    for (uint32_t result : allMethods(fujitsu, bytesOf(checkText)))
        EXPECT_EQ(result, 0xE5CCu);
    fujitsu.setDirect(true);
    fujitsu.setInitialValue(0x1D0F);
    for (uint32_t result : allMethods(fujitsu, bytesOf(checkText)))
        EXPECT_EQ(result, 0xE5CCu);
    // CRC-32/JAMCRC: the default without the final XOR, given as its augmented initial value.
    ZRCRC jam;
    jam.setXorValue(0);
    jam.setDirect(false);
    jam.setInitialValue(0x46AF6449);
    for (uint32_t result : allMethods(jam, bytesOf(checkText)))
        EXPECT_EQ(result, 0x340BC6D9u);
}

TEST(ZRCRC, settersRefuseWhatDoesNotFitAndTheTableFlagFollowsTheOrder)
{
    ZRCRC crc = ZRCRC::crcForCCITT16();
    crc.setPolynomial(0x11021);
    crc.setInitialValue(0x10000);
    crc.setXorValue(0x1FFFF);
    EXPECT_EQ(crc.polynomial(), 0x1021u);
    EXPECT_EQ(crc.initialValue(), 0u);
    EXPECT_EQ(crc.xorValue(), 0xFFFFu);
    crc.setOrder(0);
    crc.setOrder(33);
    EXPECT_EQ(crc.order(), 16u);

    // The table flag is only taken for whole bytes and is not revised by a later order.
    crc.setOrder(12);
    EXPECT_TRUE(crc.useTable());
    crc.setUseTable(true);
    EXPECT_FALSE(crc.useTable());
    crc.setOrder(16);
    crc.setUseTable(true);
    crc.setOrder(5);
    EXPECT_TRUE(crc.useTable());
    configure(crc, catalogue[4]);
    EXPECT_EQ(crc.crcForString(checkText), 0x19u);
}

TEST(ZRCRC, methodsAgreeOnLongInputsAndStringsCountUTF16Units)
{
    std::mt19937 generator(7);
    std::vector<uint8_t> bytes(1031);
    for (uint8_t& byte : bytes)
        byte = static_cast<uint8_t>(generator());
    ZRCRC crc;
    for (const Catalogued& parameters : catalogue) {
        configure(crc, parameters);
        for (size_t length : { size_t(1), size_t(7), size_t(8), size_t(9), size_t(64), size_t(1031) }) {
            const std::vector<uint32_t> results = allMethods(crc, std::span(bytes).first(length));
            for (uint32_t result : results)
                EXPECT_EQ(result, results.front()) << parameters.name << " over " << length << " bytes";
        }
    }

    ZRCRC plain;
    // "é" is two UTF-8 bytes and one UTF-16 unit; "𝄞" four bytes and two units.
    EXPECT_EQ(plain.crcForString("\xC3\xA9"), plain.crcForData(std::vector<uint8_t> { 0xC3 }));
    EXPECT_EQ(plain.crcForString("a\xF0\x9D\x84\x9E"), plain.crcForString("a\xF0\x9D"));
    EXPECT_EQ(plain.crcForString(checkText), plain.crcForBuffer(checkText.data(), 9));

    EXPECT_EQ(ZRCRC::reflect(0x1, 8), 0x80u);
    EXPECT_EQ(ZRCRC::reflect(0xF01, 4), 0x8u);
    EXPECT_EQ(ZRCRC::reflect(0x1, 32), 0x80000000u);
    EXPECT_EQ(ZRCRC::reflect(0xFFFFFFFF, 0), 0u);
}
