#pragma once

#include <locale.h>

// The C locale on this thread for as long as the scope lasts. Number formatting and parsing must not follow the
// process locale: "%.1f" writes "1.5" and a property list reads "2.5" as 2.5 under a German locale too. When the C
// locale cannot be made, the thread's locale stays as it is.
class ZRCLocaleScope {
public:
    ZRCLocaleScope() noexcept
        : _previous(uselocale(cLocale()))
    {
    }
    ~ZRCLocaleScope() { uselocale(_previous); }
    ZRCLocaleScope(const ZRCLocaleScope&) = delete;
    ZRCLocaleScope& operator=(const ZRCLocaleScope&) = delete;

    // The C locale for the C library's *_l calls; null when it cannot be made.
    static locale_t cLocale() noexcept
    {
        static const locale_t locale = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(nullptr));
        return locale;
    }

private:
    locale_t _previous;
};
