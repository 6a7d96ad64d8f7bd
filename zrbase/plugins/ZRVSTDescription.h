#pragma once

#include <zrbase/host/foundation/ZRExport.h>
#include <zrbase/host/foundation/ZRPropertyList.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// What a host needs to list a VST 2 plug-in without keeping it loaded: where it lives, when it changed, its
// identity, names and channel counts, and whether it must be ignored. A plug-in on Linux is a shared object, or a
// bundle folder holding one; its entry point is "VSTPluginMain" or the older "main". The description is filled by
// probing the plug-in once, in process (load) or in a helper process that survives whatever the plug-in does
// (probe), and is kept as a property-list dictionary (state).
class ZR_EXPORT ZRVSTDescription {
public:
    // All fields empty, zero, false.
    ZRVSTDescription() = default;
    static ZRVSTDescription description() { return {}; }
    // The path and its file's modification date; does not probe.
    static ZRVSTDescription descriptionWithPath(const std::string& path);
    static ZRVSTDescription descriptionWithState(const ZRDictionary& state);

    const std::optional<std::string>& path() const noexcept { return _path; }
    void setPath(std::optional<std::string> path) { _path = std::move(path); }
    const std::optional<std::string>& identifier() const noexcept { return _identifier; }
    void setIdentifier(std::optional<std::string> identifier) { _identifier = std::move(identifier); }
    const std::optional<ZRDate>& modificationDate() const noexcept { return _modificationDate; }
    void setModificationDate(std::optional<ZRDate> date) { _modificationDate = date; }
    const std::optional<std::string>& computerCode() const noexcept { return _computerCode; }
    void setComputerCode(std::optional<std::string> code) { _computerCode = std::move(code); }
    uint32_t uniqueID() const noexcept { return _uniqueID; }
    void setUniqueID(uint32_t uniqueID) noexcept { _uniqueID = uniqueID; }
    uint32_t version() const noexcept { return _version; }
    void setVersion(uint32_t version) noexcept { _version = version; }
    const std::optional<std::string>& productName() const noexcept { return _productName; }
    void setProductName(std::optional<std::string> name) { _productName = std::move(name); }
    const std::optional<std::string>& vendorName() const noexcept { return _vendorName; }
    void setVendorName(std::optional<std::string> name) { _vendorName = std::move(name); }
    const std::optional<std::string>& effectName() const noexcept { return _effectName; }
    void setEffectName(std::optional<std::string> name) { _effectName = std::move(name); }
    bool isInstrument() const noexcept { return _isInstrument; }
    void setInstrument(bool instrument) noexcept { _isInstrument = instrument; }
    uint32_t inputChannels() const noexcept { return _inputChannels; }
    void setInputChannels(uint32_t channels) noexcept { _inputChannels = channels; }
    uint32_t outputChannels() const noexcept { return _outputChannels; }
    void setOutputChannels(uint32_t channels) noexcept { _outputChannels = channels; }
    bool ignore() const noexcept { return _ignore; }
    void setIgnore(bool ignore) noexcept { _ignore = ignore; }

    // The effect name, else the product name, else the file name of the path without extension.
    std::string name() const;

    // "uniqueID", "version", "isSynth", "inputChannels", "outputChannels", "ignore", and "path", "identifier",
    // "modificationDate", "computerCode", "productName", "vendorName", "effectName" where set.
    ZRDictionary state() const;
    // Sets the fields whose keys are present; numbers read as unsigned integers, "isSynth" and "ignore" as booleans.
    void setState(const ZRDictionary& state);

    // Probes the plug-in in this process: loads it, calls its entry point with a host callback that answers the
    // version request with 2400 and everything else with 0, opens the effect, reads identity, channel counts and
    // names when it processes in place, closes it and unloads it. Every failure leaves `ignore` true and the other
    // fields as they were; an empty path does nothing. The plug-in's code runs on the calling thread.
    void load();

    // Probes the plug-in in the helper process "zr-plugin-probe", which prints the probed state: a plug-in that
    // crashes, hangs past the time limit, ends the process or writes garbage leaves this process running and the
    // description with `ignore` true. An empty path does nothing.
    void probe(std::chrono::milliseconds timeLimit = std::chrono::seconds(10));

    // Describes every plug-in in the folder (shared objects and bundle folders, not descending further), probing
    // several at a time out of process. Descriptions in `cache` whose path and modification date still match are
    // taken as they are, so that a second scan of an unchanged folder probes nothing; the result (sorted by path)
    // is the cache for the next scan. `probed` counts the plug-ins probed.
    static std::vector<ZRVSTDescription> scanFolder(const std::string& folder,
        const std::vector<ZRVSTDescription>& cache = {}, unsigned parallel = 0,
        std::chrono::milliseconds timeLimit = std::chrono::seconds(10), size_t* probed = nullptr);

    // The helper program probe runs: "zrbase/zr-plugin-probe" beside the library unless set.
    static std::string probeToolPath();
    static void setProbeToolPath(std::string path);

    bool operator==(const ZRVSTDescription&) const = default;

private:
    std::optional<std::string> _path;
    std::optional<std::string> _identifier;
    std::optional<ZRDate> _modificationDate;
    std::optional<std::string> _computerCode;
    uint32_t _uniqueID = 0;
    uint32_t _version = 0;
    std::optional<std::string> _productName;
    std::optional<std::string> _vendorName;
    std::optional<std::string> _effectName;
    bool _isInstrument = false;
    uint32_t _inputChannels = 0;
    uint32_t _outputChannels = 0;
    bool _ignore = false;
};
