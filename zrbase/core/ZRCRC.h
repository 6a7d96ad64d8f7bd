#pragma once

#include <zrbase/host/foundation/ZRExport.h>

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

// A cyclic redundancy check of any width from 1 to 32 bits, fully parameterised, with four interchangeable ways of
// computing it (bit by bit or with a 256-entry table, each in a direct and a non-direct form) that give the same
// result. A CRC is configured once and then used for any number of buffers; each computation starts from the
// initial value. The table is built on first use and kept until a parameter it depends on changes, so one
// instance serves one thread at a time.
//
// Setters of the polynomial and of the values accept only values that fit the width: set the order first.
class ZR_EXPORT ZRCRC {
public:
    // The common 32-bit CRC: polynomial 0x04C11DB7, initial value and final XOR 0xFFFFFFFF, reflected input and
    // output; the table method in its direct form.
    ZRCRC();
    static ZRCRC crc() { return ZRCRC(); }
    // The default with order 16, polynomial 0x1021, initial value 0, final XOR 0xFFFF and no reflection.
    static ZRCRC crcForCCITT16();

    // The width in bits; only 1 to 32 are taken.
    uint32_t order() const noexcept { return _order; }
    void setOrder(uint32_t order) noexcept;
    // In normal notation, without the top bit.
    uint32_t polynomial() const noexcept { return _polynomial; }
    void setPolynomial(uint32_t polynomial) noexcept;
    // True when the initial value is the register before the first message bit (as catalogued parameter sets give
    // it), false when it is given in the augmented (non-direct) form.
    bool direct() const noexcept { return _direct; }
    void setDirect(bool direct) noexcept { _direct = direct; }
    uint32_t initialValue() const noexcept { return _initialValue; }
    void setInitialValue(uint32_t value) noexcept;
    // XORed onto the final register.
    uint32_t xorValue() const noexcept { return _xorValue; }
    void setXorValue(uint32_t value) noexcept;
    // Each input byte is bit-reversed before use.
    bool reflectInput() const noexcept { return _reflectInput; }
    void setReflectInput(bool reflect) noexcept;
    // The final register is bit-reversed over the width before the XOR.
    bool reflectOutput() const noexcept { return _reflectOutput; }
    void setReflectOutput(bool reflect) noexcept { _reflectOutput = reflect; }
    // Only orders 8, 16, 24 and 32 take the table; for others the flag stays false. The flag is not re-examined
    // when the order changes later: a CRC whose order is then not a multiple of 8 computes bit by bit.
    bool useTable() const noexcept { return _useTable; }
    void setUseTable(bool use) noexcept { _useTable = use && _order % 8 == 0; }
    // The direct (fast) form of the chosen method.
    bool useFast() const noexcept { return _useFast; }
    void setUseFast(bool use) noexcept { _useFast = use; }

    // The lowest `bits` bits of the value in reverse order; higher bits are dropped.
    static uint32_t reflect(uint32_t value, int32_t bits) noexcept;

    // The CRC of the bytes, `order` bits wide.
    uint32_t crcForBuffer(const void* bytes, uint32_t length);
    uint32_t crcForData(std::span<const uint8_t> data);
    // The CRC of as many leading bytes of the UTF-8 text as it has UTF-16 units: the whole text when it is ASCII,
    // fewer bytes otherwise. Stored checksums depend on this shortening.
    uint32_t crcForString(std::string_view string);

private:
    uint32_t _compute(const uint8_t* bytes, size_t length);
    uint32_t _directInitialRegister() const noexcept;
    uint32_t _nonDirectInitialRegister() const noexcept;
    uint32_t _finish(uint32_t reg) const noexcept;
    uint32_t _bitByBit(const uint8_t* bytes, size_t length) const noexcept;
    uint32_t _bitByBitFast(const uint8_t* bytes, size_t length) const noexcept;
    uint32_t _table(const uint8_t* bytes, size_t length) const noexcept;
    uint32_t _tableFast(const uint8_t* bytes, size_t length) const noexcept;
    void _buildTable();
    bool _fits(uint32_t value) const noexcept { return (value & _mask) == value; }

    bool _useTable = true;
    bool _useFast = true;
    uint32_t _order = 32;
    uint32_t _polynomial = 0x04C11DB7;
    bool _direct = true;
    uint32_t _initialValue = 0xFFFFFFFF;
    uint32_t _xorValue = 0xFFFFFFFF;
    bool _reflectInput = true;
    bool _reflectOutput = true;
    uint32_t _mask = 0xFFFFFFFF;
    uint32_t _highBit = 0x80000000;
    // The 256 entries the table methods look up, empty until first needed.
    std::vector<uint32_t> _lookup;
    // Eight derived tables with which the direct table method takes eight bytes a step; without reflection their
    // entries stand at the top of 32 bits.
    std::vector<uint32_t> _slices;
};
