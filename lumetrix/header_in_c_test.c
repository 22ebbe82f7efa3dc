/* Verifies that lumetrix.h compiles as C. */
#include "lumetrix.h"

void log_from_c(const char* directory);

void log_from_c(const char* directory) {
    lumetrix_logger* const logger = lumetrix_get_logger();
    lumetrix_set_output_dir(logger, directory, "Gateway");
    lumetrix_log(logger, "GW", LUMETRIX_INFO, "from C");
    lumetrix_release(logger);
}
