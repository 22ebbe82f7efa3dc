#include <QtGlobal>

// A library for the tests of SharedLibrary.
extern "C" Q_DECL_EXPORT int quorin_test_module_answer() {
    return 42;
}
