#include <zrbase/core/ZRExceptionExtension.h>

#include <zrbase/host/foundation/ZRLocalizedString.h>
#include <zrbase/host/foundation/ZRStringWithFormat.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <cxxabi.h>
#include <dlfcn.h>
#include <execinfo.h>
#include <fcntl.h>
#include <link.h>
#include <map>
#include <memory>
#include <optional>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace {

constexpr int ZRMaximumFrames = 256;
constexpr const char* ZRSymboliser = "/usr/bin/addr2line";

struct Frame {
    std::string text; // the address as recorded
    uintptr_t address = 0;
    std::string module; // the file of the module, empty when no module holds the address
    uintptr_t moduleAddress = 0; // the address as the module's own debug information counts it
    std::string symbol;
    std::optional<uintptr_t> symbolOffset; // from the nearest exported symbol
    std::string location; // "file:line"
};

std::string demangled(const char* name)
{
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> readable(
        abi::__cxa_demangle(name, nullptr, nullptr, &status), std::free);
    return status == 0 && readable ? std::string(readable.get()) : std::string(name);
}

std::string executablePath()
{
    char path[4096];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
    return length > 0 && static_cast<size_t>(length) < sizeof path ? std::string(path, static_cast<size_t>(length))
                                                                   : std::string();
}

std::string fileName(std::string_view path)
{
    const size_t slash = path.rfind('/');
    return std::string(slash == std::string_view::npos ? path : path.substr(slash + 1));
}

// What the dynamic linker knows of the frame: its module and the nearest exported symbol.
void lookUp(Frame& frame)
{
    // A return address points behind its call; the call itself is one byte earlier.
    const uintptr_t inCall = frame.address - 1;
    Dl_info info {};
    link_map* module = nullptr;
    if (!dladdr1(reinterpret_cast<void*>(inCall), &info, reinterpret_cast<void**>(&module), RTLD_DL_LINKMAP) || !module)
        return;
    // The main program's link map has no name.
    frame.module = module->l_name && *module->l_name ? module->l_name : executablePath();
    if (frame.module.empty())
        return;
    frame.moduleAddress = inCall - module->l_addr;
    if (info.dli_sname && info.dli_saddr) {
        frame.symbol = demangled(info.dli_sname);
        frame.symbolOffset = frame.address - reinterpret_cast<uintptr_t>(info.dli_saddr);
    }
}

// Runs addr2line over a module's addresses and answers its output: a function and a "file:line" line each.
std::string runSymboliser(const std::string& module, const std::vector<Frame*>& frames)
{
    std::vector<std::string> arguments { ZRSymboliser, "-C", "-f", "-e", module };
    for (const Frame* frame : frames)
        arguments.push_back(ZRStringWithFormat("0x%qx", static_cast<unsigned long long>(frame->moduleAddress)));
    std::vector<char*> argv;
    for (std::string& argument : arguments)
        argv.push_back(argument.data());
    argv.push_back(nullptr);

    int pipeEnds[2];
    if (pipe2(pipeEnds, O_CLOEXEC) != 0)
        return {};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, pipeEnds[1], STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t child = 0;
    const int spawned = posix_spawn(&child, ZRSymboliser, &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(pipeEnds[1]);
    std::string output;
    if (spawned == 0) {
        char buffer[4096];
        for (;;) {
            const ssize_t count = read(pipeEnds[0], buffer, sizeof buffer);
            if (count < 0 && errno == EINTR)
                continue;
            if (count <= 0)
                break;
            output.append(buffer, static_cast<size_t>(count));
        }
        int status = 0;
        while (waitpid(child, &status, 0) < 0 && errno == EINTR) { }
    }
    close(pipeEnds[0]);
    return output;
}

// Names the frames from the debug information of their modules, where addr2line is there to read it.
void symbolise(std::vector<Frame>& frames)
{
    if (access(ZRSymboliser, X_OK) != 0)
        return;
    std::map<std::string, std::vector<Frame*>> byModule;
    for (Frame& frame : frames) {
        if (!frame.module.empty())
            byModule[frame.module].push_back(&frame);
    }
    for (const auto& [module, moduleFrames] : byModule) {
        const std::string output = runSymboliser(module, moduleFrames);
        size_t position = 0;
        const auto nextLine = [&] {
            const size_t end = output.find('\n', position);
            if (end == std::string::npos)
                return std::string();
            std::string line = output.substr(position, end - position);
            position = end + 1;
            return line;
        };
        for (Frame* frame : moduleFrames) {
            const std::string function = nextLine();
            const std::string location = nextLine();
            if (function.empty() || function == "??")
                continue;
            frame->symbol = function;
            frame->symbolOffset.reset();
            if (!location.starts_with("??"))
                frame->location = location;
        }
    }
}

std::string describe(const Frame& frame)
{
    if (frame.module.empty())
        return frame.text;
    const std::string module = fileName(frame.module);
    if (frame.symbol.empty())
        return ZRStringWithFormat("%@ (in %@)", frame.text, module);
    if (!frame.location.empty())
        return ZRStringWithFormat("%@ (in %@) (%@)", frame.symbol, module, frame.location);
    if (frame.symbolOffset)
        return ZRStringWithFormat("%@ (in %@) + %qu", frame.symbol, module, static_cast<uint64_t>(*frame.symbolOffset));
    return ZRStringWithFormat("%@ (in %@)", frame.symbol, module);
}

std::string symbolised(std::vector<Frame> frames)
{
    if (frames.empty())
        return ZRLocalizedString("No stack trace was available.");
    for (Frame& frame : frames) {
        if (frame.address > 0)
            lookUp(frame);
    }
    symbolise(frames);
    std::string trace;
    for (const Frame& frame : frames) {
        trace += describe(frame);
        trace += '\n';
    }
    return trace;
}

Frame frameAt(const void* address)
{
    Frame frame;
    frame.address = reinterpret_cast<uintptr_t>(address);
    frame.text = ZRStringWithFormat("0x%qx", static_cast<unsigned long long>(frame.address));
    return frame;
}

// The calling thread's frames from the one the caller returns to on: the frames above it belong to this library
// and, where a sanitizer intercepts backtrace(), to the interceptor, so their number is not fixed.
std::vector<Frame> framesFrom(const void* caller)
{
    void* addresses[ZRMaximumFrames];
    const int count = backtrace(addresses, ZRMaximumFrames);
    const auto first = std::find(addresses, addresses + count, caller);
    std::vector<Frame> frames;
    for (auto address = first == addresses + count ? addresses : first; address < addresses + count; ++address)
        frames.push_back(frameAt(*address));
    return frames;
}

}

namespace ZRExtension {

std::string stackTraceAddresses()
{
    std::string text;
    for (const Frame& frame : framesFrom(__builtin_return_address(0))) {
        if (!text.empty())
            text += "  ";
        text += frame.text;
    }
    return text;
}

std::string stackTrace() { return symbolised(framesFrom(__builtin_return_address(0))); }

std::string stackTrace(std::string_view addresses)
{
    std::vector<Frame> frames;
    size_t position = 0;
    while (position < addresses.size()) {
        const size_t start = addresses.find_first_not_of(" \t\r\n", position);
        if (start == std::string_view::npos)
            break;
        const size_t end = std::min(addresses.find_first_of(" \t\r\n", start), addresses.size());
        Frame frame;
        frame.text = std::string(addresses.substr(start, end - start));
        std::string_view digits = frame.text;
        if (digits.starts_with("0x") || digits.starts_with("0X"))
            digits.remove_prefix(2);
        unsigned long long value = 0;
        const auto [last, failure] = std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
        // Anything that is not an address is kept as it stands.
        if (failure == std::errc() && last == digits.data() + digits.size())
            frame.address = static_cast<uintptr_t>(value);
        frames.push_back(std::move(frame));
        position = end;
    }
    return symbolised(std::move(frames));
}

}
