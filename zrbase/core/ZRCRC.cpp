#include <zrbase/core/ZRCRC.h>

#include <zrbase/host/foundation/ZRUnicode.h>

#include <algorithm>

namespace {

constexpr size_t tableSize = 256;
constexpr size_t sliceCount = 8;

uint32_t littleEndian32(const uint8_t* bytes) noexcept
{
    return uint32_t(bytes[0]) | uint32_t(bytes[1]) << 8 | uint32_t(bytes[2]) << 16 | uint32_t(bytes[3]) << 24;
}

uint32_t bigEndian32(const uint8_t* bytes) noexcept
{
    return uint32_t(bytes[0]) << 24 | uint32_t(bytes[1]) << 16 | uint32_t(bytes[2]) << 8 | uint32_t(bytes[3]);
}

}

ZRCRC::ZRCRC() = default;

ZRCRC ZRCRC::crcForCCITT16()
{
    ZRCRC crc;
    crc.setOrder(16);
    crc.setPolynomial(0x1021);
    crc.setInitialValue(0);
    crc.setXorValue(0xFFFF);
    crc.setReflectInput(false);
    crc.setReflectOutput(false);
    return crc;
}

void ZRCRC::setOrder(uint32_t order) noexcept
{
    if (order < 1 || order > 32)
        return;
    _order = order;
    _highBit = uint32_t(1) << (order - 1);
    _mask = static_cast<uint32_t>((uint64_t(2) << (order - 1)) - 1);
    _lookup.clear();
    _slices.clear();
}

void ZRCRC::setPolynomial(uint32_t polynomial) noexcept
{
    if (!_fits(polynomial))
        return;
    _polynomial = polynomial;
    _lookup.clear();
    _slices.clear();
}

void ZRCRC::setInitialValue(uint32_t value) noexcept
{
    if (_fits(value))
        _initialValue = value;
}

void ZRCRC::setXorValue(uint32_t value) noexcept
{
    if (_fits(value))
        _xorValue = value;
}

void ZRCRC::setReflectInput(bool reflect) noexcept
{
    _reflectInput = reflect;
    _lookup.clear();
    _slices.clear();
}

uint32_t ZRCRC::reflect(uint32_t value, int32_t bits) noexcept
{
    uint32_t reflected = 0;
    for (int32_t bit = 0; bit < std::min(bits, 32); ++bit) {
        reflected = reflected << 1 | (value & 1);
        value >>= 1;
    }
    return reflected;
}

uint32_t ZRCRC::crcForBuffer(const void* bytes, uint32_t length)
{
    return _compute(static_cast<const uint8_t*>(bytes), length);
}

uint32_t ZRCRC::crcForData(std::span<const uint8_t> data) { return _compute(data.data(), data.size()); }

uint32_t ZRCRC::crcForString(std::string_view string)
{
    const size_t length = std::min(ZRUnicode::utf16Length(string), string.size());
    return _compute(reinterpret_cast<const uint8_t*>(string.data()), length);
}

uint32_t ZRCRC::_compute(const uint8_t* bytes, size_t length)
{
    // The table methods step a byte at a time and need a width of whole bytes.
    if (_useTable && _order % 8 == 0) {
        if (_lookup.empty())
            _buildTable();
        return _useFast ? _tableFast(bytes, length) : _table(bytes, length);
    }
    return _useFast ? _bitByBitFast(bytes, length) : _bitByBit(bytes, length);
}

uint32_t ZRCRC::_directInitialRegister() const noexcept
{
    if (_direct)
        return _initialValue;
    uint32_t reg = _initialValue;
    for (uint32_t step = 0; step < _order; ++step) {
        const bool carry = reg & _highBit;
        reg <<= 1;
        if (carry)
            reg ^= _polynomial;
    }
    return reg & _mask;
}

uint32_t ZRCRC::_nonDirectInitialRegister() const noexcept
{
    if (!_direct)
        return _initialValue;
    // Runs the register backwards: a set low bit can only have come from a XOR with the polynomial.
    uint32_t reg = _initialValue;
    for (uint32_t step = 0; step < _order; ++step) {
        if (reg & 1)
            reg = ((reg ^ _polynomial) >> 1) | _highBit;
        else
            reg >>= 1;
    }
    return reg;
}

uint32_t ZRCRC::_finish(uint32_t reg) const noexcept
{
    if (_reflectOutput)
        reg = reflect(reg, static_cast<int32_t>(_order));
    return (reg ^ _xorValue) & _mask;
}

uint32_t ZRCRC::_bitByBit(const uint8_t* bytes, size_t length) const noexcept
{
    uint32_t reg = _nonDirectInitialRegister();
    for (size_t index = 0; index < length; ++index) {
        const uint32_t byte = _reflectInput ? reflect(bytes[index], 8) : bytes[index];
        for (uint32_t bit = 0x80; bit; bit >>= 1) {
            const bool carry = reg & _highBit;
            reg = reg << 1 | ((byte & bit) ? 1 : 0);
            if (carry)
                reg ^= _polynomial;
        }
    }
    // The message is augmented by `order` zero bits.
    for (uint32_t step = 0; step < _order; ++step) {
        const bool carry = reg & _highBit;
        reg <<= 1;
        if (carry)
            reg ^= _polynomial;
    }
    return _finish(reg);
}

uint32_t ZRCRC::_bitByBitFast(const uint8_t* bytes, size_t length) const noexcept
{
    uint32_t reg = _directInitialRegister();
    for (size_t index = 0; index < length; ++index) {
        const uint32_t byte = _reflectInput ? reflect(bytes[index], 8) : bytes[index];
        for (uint32_t bit = 0x80; bit; bit >>= 1) {
            uint32_t carry = reg & _highBit;
            if (byte & bit)
                carry ^= _highBit;
            reg <<= 1;
            if (carry)
                reg ^= _polynomial;
        }
    }
    return _finish(reg);
}

void ZRCRC::_buildTable()
{
    _lookup.resize(tableSize);
    for (uint32_t index = 0; index < tableSize; ++index) {
        uint32_t reg = _reflectInput ? reflect(index, 8) : index;
        reg <<= _order - 8;
        for (int bit = 0; bit < 8; ++bit) {
            const bool carry = reg & _highBit;
            reg <<= 1;
            if (carry)
                reg ^= _polynomial;
        }
        if (_reflectInput)
            reg = reflect(reg, static_cast<int32_t>(_order));
        _lookup[index] = reg & _mask;
    }

    // Slice k maps a byte to its effect on the register after k further zero bytes. Reflected registers shift
    // towards bit 0; the others are kept at the top of 32 bits so that bits above the width fall out by themselves.
    _slices.resize(sliceCount * tableSize);
    const uint32_t alignment = _reflectInput ? 0 : 32 - _order;
    for (size_t index = 0; index < tableSize; ++index)
        _slices[index] = _lookup[index] << alignment;
    for (size_t slice = 1; slice < sliceCount; ++slice) {
        for (size_t index = 0; index < tableSize; ++index) {
            const uint32_t previous = _slices[(slice - 1) * tableSize + index];
            _slices[slice * tableSize + index] = _reflectInput ? (previous >> 8) ^ _slices[previous & 0xFF]
                                                               : (previous << 8) ^ _slices[previous >> 24];
        }
    }
}

uint32_t ZRCRC::_table(const uint8_t* bytes, size_t length) const noexcept
{
    const uint32_t* table = _lookup.data();
    const uint32_t shift = _order - 8;
    uint32_t reg = _nonDirectInitialRegister();
    if (_reflectInput) {
        reg = reflect(reg, static_cast<int32_t>(_order));
        for (size_t index = 0; index < length; ++index)
            reg = ((reg >> 8) | uint32_t(bytes[index]) << shift) ^ table[reg & 0xFF];
        for (uint32_t step = 0; step < _order / 8; ++step)
            reg = (reg >> 8) ^ table[reg & 0xFF];
    } else {
        for (size_t index = 0; index < length; ++index)
            reg = ((reg << 8) | bytes[index]) ^ table[(reg >> shift) & 0xFF];
        for (uint32_t step = 0; step < _order / 8; ++step)
            reg = (reg << 8) ^ table[(reg >> shift) & 0xFF];
    }
    if (_reflectInput != _reflectOutput)
        reg = reflect(reg, static_cast<int32_t>(_order));
    return (reg ^ _xorValue) & _mask;
}

uint32_t ZRCRC::_tableFast(const uint8_t* bytes, size_t length) const noexcept
{
    const uint32_t* t = _slices.data();
    const uint8_t* const end = bytes + length;
    uint32_t reg = _directInitialRegister();
    if (_reflectInput) {
        reg = reflect(reg, static_cast<int32_t>(_order));
        for (; end - bytes >= 8; bytes += 8) {
            const uint32_t one = littleEndian32(bytes) ^ reg;
            const uint32_t two = littleEndian32(bytes + 4);
            reg = t[7 * tableSize + (one & 0xFF)] ^ t[6 * tableSize + ((one >> 8) & 0xFF)]
                ^ t[5 * tableSize + ((one >> 16) & 0xFF)] ^ t[4 * tableSize + (one >> 24)]
                ^ t[3 * tableSize + (two & 0xFF)] ^ t[2 * tableSize + ((two >> 8) & 0xFF)]
                ^ t[1 * tableSize + ((two >> 16) & 0xFF)] ^ t[two >> 24];
        }
        for (; bytes != end; ++bytes)
            reg = (reg >> 8) ^ t[(reg ^ *bytes) & 0xFF];
    } else {
        const uint32_t alignment = 32 - _order;
        reg <<= alignment;
        for (; end - bytes >= 8; bytes += 8) {
            const uint32_t one = bigEndian32(bytes) ^ reg;
            const uint32_t two = bigEndian32(bytes + 4);
            reg = t[7 * tableSize + (one >> 24)] ^ t[6 * tableSize + ((one >> 16) & 0xFF)]
                ^ t[5 * tableSize + ((one >> 8) & 0xFF)] ^ t[4 * tableSize + (one & 0xFF)]
                ^ t[3 * tableSize + (two >> 24)] ^ t[2 * tableSize + ((two >> 16) & 0xFF)]
                ^ t[1 * tableSize + ((two >> 8) & 0xFF)] ^ t[two & 0xFF];
        }
        for (; bytes != end; ++bytes)
            reg = (reg << 8) ^ t[(reg >> 24) ^ *bytes];
        reg >>= alignment;
    }
    if (_reflectInput != _reflectOutput)
        reg = reflect(reg, static_cast<int32_t>(_order));
    return (reg ^ _xorValue) & _mask;
}
