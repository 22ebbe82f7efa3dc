#pragma once

#include <string>

// While it lives, the C library counts in German: its decimal point is a comma. Throws
// std::runtime_error on a machine that has no such locale.
class GermanLocale {
public:
    GermanLocale();
    ~GermanLocale();

    GermanLocale(const GermanLocale&) = delete;
    GermanLocale& operator=(const GermanLocale&) = delete;

private:
    std::string before_;
};
