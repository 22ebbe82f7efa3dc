#include "json/testing/german_locale.h"

#include <array>
#include <clocale>
#include <cstdio>
#include <stdexcept>
#include <string_view>

namespace {

bool decimalPointIsComma() {
    std::array<char, 8> text{};
    const int length = std::snprintf(text.data(), text.size(), "%.1f", 0.5);
    return length == 3 && std::string_view(text.data()) == "0,5";
}

} // namespace

GermanLocale::GermanLocale() : previous_(std::setlocale(LC_ALL, nullptr)) {
    for (const char* const name : {"de_DE.UTF-8", "German_Germany.1252"}) {
        if (std::setlocale(LC_ALL, name) != nullptr && decimalPointIsComma()) {
            return;
        }
    }
    static_cast<void>(std::setlocale(LC_ALL, previous_.c_str()));
    throw std::runtime_error("The locale de_DE.UTF-8 is missing (Debian: package locales-all).");
}

GermanLocale::~GermanLocale() {
    static_cast<void>(std::setlocale(LC_ALL, previous_.c_str()));
}
