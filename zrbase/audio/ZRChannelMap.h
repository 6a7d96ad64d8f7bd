#pragma once

#include <zrbase/host/foundation/ZRData.h>
#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRGeometry.h>
#include <zrbase/host/foundation/ZRIndexSet.h>

#include <cstdint>
#include <span>
#include <string>
#include <vector>

// Which input channels feed which output channels: for every input, the set of outputs it is tied to, as a
// matrix of check boxes shows it. Only the routing is kept; moving samples along it is the caller's business.
//
// Untying and clearing an input drop the inputs at the end that are left without ties; inputs before the last
// tied one may stay empty. A tie is also a point whose x is the input and whose y the output.
class ZR_EXPORT ZRChannelMap {
public:
    // An empty map.
    ZRChannelMap() = default;
    // The identity map of `count` channels.
    static ZRChannelMap defaultMapForCount(uint32_t count);
    // A map read from `state`, empty when the state cannot be read.
    static ZRChannelMap mapWithState(std::span<const uint8_t> state);

    // The inputs the map has room for, empty ones included.
    uint32_t inputCount() const noexcept { return static_cast<uint32_t>(_map.size()); }
    // One past the highest tied output; 1 for a map without ties, by design of the count.
    uint32_t outputCount() const noexcept;
    // Whether the input is tied to the output; false for inputs past the map.
    bool isInput(uint32_t input, uint32_t tiedToOutput) const noexcept;
    // The outputs of an input, as the map holds them (empty for inputs past the map).
    const ZRIndexSet& outputTiesForInput(uint32_t input) const noexcept;
    ZRIndexSet inputTiesForOutput(uint32_t output) const;
    // The inputs with at least one tie.
    ZRIndexSet tiedInputs() const;
    uint32_t tiedInputCount() const noexcept;
    // Every output tied to some input.
    ZRIndexSet tiedOutputs() const;
    uint32_t tiedOutputCount() const { return tiedOutputs().count(); }
    // Every tie as (input, output), by input and then by output.
    std::vector<ZRPoint> ties() const;
    // The ties as the host describes an array of points: "(\n    \"NSPoint: {0, 0}\"\n)".
    std::string description() const;

    // Ties every listed input to every listed output, making room for inputs past the map. An empty list of
    // inputs changes nothing.
    void tieInputs(const ZRIndexSet& inputs, const ZRIndexSet& toOutputs);
    void tieInputs(const ZRIndexSet& inputs, uint32_t toOutput);
    void tieInput(uint32_t input, const ZRIndexSet& toOutputs);
    void tieInput(uint32_t input, uint32_t toOutput);
    // Ties input x to output y; negative coordinates count as 0, larger ones than 32 bits hold as the largest index.
    void tie(ZRPoint tie);
    // Removes one tie, then the inputs left empty at the end of the map.
    void untieInput(uint32_t input, uint32_t fromOutput);
    // untieInput with x and y truncated; a point off the map's indexes unties nothing.
    void untie(ZRPoint tie);
    // Removes every tie of an input, then the inputs left empty at the end of the map.
    void clearInput(uint32_t input);
    // Removes every tie to an output. Inputs left empty stay in the map.
    void clearOutput(uint32_t output);
    void clear() noexcept { _map.clear(); }
    // Replaces the map by the identity map of `count` channels.
    void mapDefaultForCount(uint32_t count);

    // The map as data: a keyed archive of one array holding, for every input, the array of its outputs.
    ZRData state() const;
    // Takes the map from `state`; data that is not such an archive changes nothing.
    void setState(std::span<const uint8_t> state);

    bool operator==(const ZRChannelMap&) const = default;

private:
    void _clearUnusedInputs() noexcept;

    std::vector<ZRIndexSet> _map;
};
