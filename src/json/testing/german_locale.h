#pragma once

#include <string>

// Sets a German C locale, with a decimal comma, and restores the previous locale on destruction.
// Affects the whole process. The constructor throws std::runtime_error if the locale is not
// installed.
class GermanLocale {
public:
    GermanLocale();
    ~GermanLocale();

    GermanLocale(const GermanLocale&) = delete;
    GermanLocale& operator=(const GermanLocale&) = delete;

private:
    std::string previous_;
};
