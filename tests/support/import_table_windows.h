#pragma once

namespace quorin::test {

// Makes all libraries that this process has loaded call `replacement` instead of the imported
// function `name`. Does not change the program itself, so its code can still call the function, nor
// the libraries of the system.
void replaceImport(const char* name, void (*replacement)());

template<typename Result, typename... Arguments>
void replaceImport(const char* name, Result (*replacement)(Arguments...)) {
    replaceImport(name, reinterpret_cast<void (*)()>(replacement));
}

} // namespace quorin::test
