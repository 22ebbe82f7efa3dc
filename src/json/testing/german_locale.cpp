#include "json/testing/german_locale.h"

#include <clocale>
#include <cstdio>
#include <stdexcept>
#include <string_view>

namespace {

bool commaIsDecimalPoint() {
    char text[8] = {};
    std::snprintf(text, sizeof(text), "%.1f", 0.5);
    return std::string_view(text) == "0,5";
}

} // namespace

GermanLocale::GermanLocale() : before_(std::setlocale(LC_ALL, nullptr)) {
    for (const char* const name : {"de_DE.UTF-8", "German_Germany.1252"}) {
        if (std::setlocale(LC_ALL, name) != nullptr && commaIsDecimalPoint()) {
            return;
        }
    }
    std::setlocale(LC_ALL, before_.c_str());
    throw std::runtime_error("The locale de_DE.UTF-8 is missing (Debian: package locales-all).");
}

GermanLocale::~GermanLocale() {
    std::setlocale(LC_ALL, before_.c_str());
}
