#include <zrbase/plugins/ZRVSTDescription.h>

#include <zrbase/core/ZRStringExtension.h>
#include <zrbase/file/ZRFile.h>
#include <zrbase/host/system/ZRChildProcess.h>
#include <zrbase/host/system/ZRModule.h>
#include <zrbase/plugins/ZRVSTInterface.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <filesystem>
#include <mutex>
#include <thread>

namespace {

intptr_t hostCallback(AEffect*, int32_t opcode, int32_t, intptr_t, void*, float)
{
    return opcode == ZRVST::audioMasterVersion ? ZRVST::hostVersion : 0;
}

std::mutex probeToolMutex;
std::string& probeTool()
{
    static std::string path = ZRModule::libraryFolder() + "/zrbase/zr-plugin-probe";
    return path;
}

const std::string* stringFor(const ZRDictionary& state, std::string_view key)
{
    const auto found = state.find(key);
    return found == state.end() ? nullptr : found->second.string();
}

const ZRPropertyList* valueFor(const ZRDictionary& state, std::string_view key)
{
    const auto found = state.find(key);
    return found == state.end() ? nullptr : &found->second;
}

}

ZRVSTDescription ZRVSTDescription::descriptionWithPath(const std::string& path)
{
    ZRVSTDescription description;
    description._path = path;
    description._modificationDate = ZRFile::modificationDateOfFileAtPath(path);
    // A bundle whose shared object was replaced in place has changed too.
    const std::string executable = ZRModule::executablePath(path);
    if (!executable.empty() && executable != path)
        if (const std::optional<ZRDate> date = ZRFile::modificationDateOfFileAtPath(executable))
            if (!description._modificationDate || *date > *description._modificationDate)
                description._modificationDate = date;
    return description;
}

ZRVSTDescription ZRVSTDescription::descriptionWithState(const ZRDictionary& state)
{
    ZRVSTDescription description;
    description.setState(state);
    return description;
}

std::string ZRVSTDescription::name() const
{
    if (_effectName && !_effectName->empty())
        return *_effectName;
    if (_productName && !_productName->empty())
        return *_productName;
    return ZRExtension::filename(_path.value_or(""));
}

ZRDictionary ZRVSTDescription::state() const
{
    ZRDictionary state { { "uniqueID", _uniqueID }, { "version", _version }, { "isSynth", _isInstrument },
        { "inputChannels", _inputChannels }, { "outputChannels", _outputChannels }, { "ignore", _ignore } };
    const auto setString = [&](const char* key, const std::optional<std::string>& value) {
        if (value)
            state.emplace(key, *value);
    };
    setString("path", _path);
    setString("identifier", _identifier);
    if (_modificationDate)
        state.emplace("modificationDate", *_modificationDate);
    setString("computerCode", _computerCode);
    setString("productName", _productName);
    setString("vendorName", _vendorName);
    setString("effectName", _effectName);
    return state;
}

void ZRVSTDescription::setState(const ZRDictionary& state)
{
    const auto setString = [&](const char* key, std::optional<std::string>& field) {
        if (const std::string* value = stringFor(state, key))
            field = *value;
    };
    const auto setNumber = [&](const char* key, uint32_t& field) {
        if (const ZRPropertyList* value = valueFor(state, key))
            field = value->unsignedIntValue();
    };
    const auto setBoolean = [&](const char* key, bool& field) {
        if (const ZRPropertyList* value = valueFor(state, key))
            field = value->boolValue();
    };
    setString("path", _path);
    setString("identifier", _identifier);
    if (const ZRPropertyList* value = valueFor(state, "modificationDate"); value && value->date())
        _modificationDate = *value->date();
    setString("computerCode", _computerCode);
    setNumber("uniqueID", _uniqueID);
    setNumber("version", _version);
    setString("productName", _productName);
    setString("vendorName", _vendorName);
    setString("effectName", _effectName);
    setBoolean("isSynth", _isInstrument);
    setNumber("inputChannels", _inputChannels);
    setNumber("outputChannels", _outputChannels);
    setBoolean("ignore", _ignore);
}

void ZRVSTDescription::load()
{
    if (!_path || _path->empty())
        return;
    _ignore = true;
    const std::string executable = ZRModule::executablePath(*_path);
    if (executable.empty())
        return;
    const std::unique_ptr<ZRModule> module = ZRModule::moduleWithPath(executable);
    if (!module)
        return;
    void* entry = module->symbol("VSTPluginMain");
    if (!entry)
        entry = module->symbol("main");
    if (!entry)
        return;
    AEffect* effect = reinterpret_cast<ZRVSTEntryPoint>(entry)(hostCallback);
    if (!effect || !effect->dispatcher)
        return;
    effect->dispatcher(effect, ZRVST::effOpen, 0, 0, nullptr, 0.0f);
    if (effect->flags & ZRVST::effFlagsCanReplacing) {
        _uniqueID = static_cast<uint32_t>(effect->uniqueID);
        _version = static_cast<uint32_t>(effect->version);
        _inputChannels = static_cast<uint32_t>(effect->numInputs);
        _outputChannels = static_cast<uint32_t>(effect->numOutputs);
        _isInstrument = effect->flags & ZRVST::effFlagsIsSynth;
        // Room for far more than the longest string a plug-in may write; the last byte always stays zero.
        std::array<char, 256> scratch {};
        const auto ask = [&](int32_t opcode, std::optional<std::string>& field) {
            scratch.fill(0);
            if (effect->dispatcher(effect, opcode, 0, 0, scratch.data(), 0.0f) != 1)
                return;
            const size_t length = std::find(scratch.begin(), scratch.end() - 1, '\0') - scratch.begin();
            field
                = ZRExtension::asciiStringWithData(std::span(reinterpret_cast<const uint8_t*>(scratch.data()), length));
        };
        ask(ZRVST::effGetProductString, _productName);
        ask(ZRVST::effGetVendorString, _vendorName);
        ask(ZRVST::effGetEffectName, _effectName);
        _ignore = false;
    }
    effect->dispatcher(effect, ZRVST::effClose, 0, 0, nullptr, 0.0f);
}

void ZRVSTDescription::probe(std::chrono::milliseconds timeLimit)
{
    if (!_path || _path->empty())
        return;
    _ignore = true;
    const ZRChildProcess::Result result = ZRChildProcess::run(probeToolPath(), { *_path }, timeLimit);
    if (!result.started || result.timedOut || result.exitStatus != 0)
        return;
    const std::optional<ZRPropertyList> output = ZRPropertyList::propertyListWithData(result.output);
    const ZRDictionary* state = output ? output->dictionary() : nullptr;
    if (!state || !stringFor(*state, "path") || *stringFor(*state, "path") != *_path)
        return;
    // Only what probing finds: the host's own fields stay as they are.
    ZRDictionary probed = *state;
    for (const char* key : { "path", "identifier", "modificationDate", "computerCode" })
        probed.erase(key);
    if (const ZRPropertyList* ignore = valueFor(probed, "ignore"); !ignore || ignore->boolValue())
        return;
    setState(probed);
}

std::vector<ZRVSTDescription> ZRVSTDescription::scanFolder(const std::string& folder,
    const std::vector<ZRVSTDescription>& cache, unsigned parallel, std::chrono::milliseconds timeLimit, size_t* probed)
{
    namespace fs = std::filesystem;
    std::vector<std::string> paths;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
        const std::string path = entry.path().string();
        if ((entry.is_regular_file(error) && entry.path().extension() == ".so")
            || (entry.is_directory(error) && !ZRModule::executablePath(path).empty()))
            paths.push_back(path);
    }
    std::sort(paths.begin(), paths.end());

    std::vector<ZRVSTDescription> descriptions;
    std::vector<size_t> pending;
    for (const std::string& path : paths) {
        ZRVSTDescription fresh = descriptionWithPath(path);
        const auto cached = std::find_if(cache.begin(), cache.end(), [&](const ZRVSTDescription& description) {
            return description._path == fresh._path && description._modificationDate == fresh._modificationDate;
        });
        if (cached != cache.end()) {
            descriptions.push_back(*cached);
        } else {
            pending.push_back(descriptions.size());
            descriptions.push_back(std::move(fresh));
        }
    }

    // Each helper is a process of its own: the threads only start them and wait.
    const unsigned workers = std::clamp<unsigned>(
        parallel ? parallel : std::thread::hardware_concurrency() * 2, 1, std::max<size_t>(pending.size(), 1));
    std::atomic<size_t> next = 0;
    std::vector<std::thread> threads;
    for (unsigned worker = 0; worker < workers; ++worker)
        threads.emplace_back([&] {
            for (size_t index; (index = next++) < pending.size();)
                descriptions[pending[index]].probe(timeLimit);
        });
    for (std::thread& thread : threads)
        thread.join();
    if (probed)
        *probed = pending.size();
    return descriptions;
}

std::string ZRVSTDescription::probeToolPath()
{
    const std::lock_guard lock(probeToolMutex);
    return probeTool();
}

void ZRVSTDescription::setProbeToolPath(std::string path)
{
    const std::lock_guard lock(probeToolMutex);
    probeTool() = std::move(path);
}
