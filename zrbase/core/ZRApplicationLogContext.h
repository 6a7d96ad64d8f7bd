#pragma once

#include <zrbase/host/foundation/ZRExport.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <typeinfo>
#include <vector>

// Where a message of the application log comes from. Only the domain and the class name of the sender reach
// the line; the source position and further domains travel along for whoever inspects the context.
class ZR_EXPORT ZRApplicationLogContext {
public:
    // The sender is not owned and may be gone by the time the line is written: only its dynamic type is kept.
    template <typename Sender>
    ZRApplicationLogContext(
        std::optional<std::string> domain, const char* file, uint32_t line, const char* function, const Sender* sender)
        : ZRApplicationLogContext(std::move(domain), file, line, function, sender, sender ? &typeid(*sender) : nullptr)
    {
    }
    ZRApplicationLogContext(std::optional<std::string> domain, const char* file, uint32_t line, const char* function,
        std::nullptr_t sender = nullptr);

    const std::optional<std::string>& domain() const noexcept { return _domain; }
    void addDomain(std::string domain);
    const std::vector<std::string>& otherDomains() const noexcept { return _otherDomains; }
    const std::string& file() const noexcept { return _file; }
    uint32_t line() const noexcept { return _line; }
    const std::string& function() const noexcept { return _function; }
    const void* sender() const noexcept { return _sender; }
    // The sender's class name as the compiler spells it ("Studio::Mixer"), none without a sender.
    std::optional<std::string> senderClassName() const;

    // The columns the context adds to a line: a blank and the domain in exactly 12 bytes (12 blanks without a
    // domain), then a blank and the sender's class name in exactly 24 bytes (25 blanks without a sender).
    std::string logLine() const;

private:
    ZRApplicationLogContext(std::optional<std::string> domain, const char* file, uint32_t line, const char* function,
        const void* sender, const std::type_info* senderType);

    std::string _file;
    uint32_t _line;
    std::string _function;
    const void* _sender;
    const std::type_info* _senderType;
    std::optional<std::string> _domain;
    std::vector<std::string> _otherDomains;
};

// A context for the calling member function: ZR_LOG_CONTEXT("Mixer", this).
#define ZR_LOG_CONTEXT(domain, sender)                                                                                 \
    std::make_unique<ZRApplicationLogContext>((domain), __FILE__, __LINE__, __func__, (sender))
