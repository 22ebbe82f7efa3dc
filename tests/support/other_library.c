/* A library of the host program, with the usual name of one that the gateway needs. */

__declspec(dllexport) int otherLibrary(void);

int otherLibrary(void) {
    return 1;
}
