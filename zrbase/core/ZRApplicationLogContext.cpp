#include <zrbase/core/ZRApplicationLogContext.h>

#include <zrbase/host/foundation/ZRStringWithFormat.h>

#include <cstdlib>
#include <cxxabi.h>

ZRApplicationLogContext::ZRApplicationLogContext(
    std::optional<std::string> domain, const char* file, uint32_t line, const char* function, std::nullptr_t)
    : ZRApplicationLogContext(std::move(domain), file, line, function, nullptr, nullptr)
{
}

ZRApplicationLogContext::ZRApplicationLogContext(std::optional<std::string> domain, const char* file, uint32_t line,
    const char* function, const void* sender, const std::type_info* senderType)
    : _file(file ? file : "")
    , _line(line)
    , _function(function ? function : "")
    , _sender(sender)
    , _senderType(senderType)
    , _domain(std::move(domain))
{
}

void ZRApplicationLogContext::addDomain(std::string domain) { _otherDomains.push_back(std::move(domain)); }

std::optional<std::string> ZRApplicationLogContext::senderClassName() const
{
    if (!_senderType)
        return std::nullopt;
    int status = 0;
    char* demangled = abi::__cxa_demangle(_senderType->name(), nullptr, nullptr, &status);
    std::string name = status == 0 && demangled ? demangled : _senderType->name();
    std::free(demangled);
    return name;
}

std::string ZRApplicationLogContext::logLine() const
{
    std::string line;
    if (_domain)
        line += ZRStringWithFormat(" %-12.12s", *_domain);
    else
        line.append(12, ' ');
    if (std::optional<std::string> className = senderClassName())
        line += ZRStringWithFormat(" %-24.24s", *className);
    else
        line.append(25, ' ');
    return line;
}
