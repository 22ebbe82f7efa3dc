// A host program of the gateway. Usage: host SETTINGS primary|secondary

#include <QLibrary>
#include <QString>

#include <cstdio>
#include <filesystem>

int main(int argc, char** argv) {
    // The gateway library is in the folder of this program.
    const auto path = std::filesystem::absolute(argv[0]).replace_filename("libQuorinGatewayHttp");
    QLibrary library(QString::fromStdString(path.string()));
    using MainFunc = int(int, char**);
    const auto run = reinterpret_cast<MainFunc*>(library.resolve("QuorinGatewayHttpMainFunc"));
    if (run == nullptr) {
        std::fprintf(stderr, "%s\n", qPrintable(library.errorString()));
        return 3;
    }
    return run(argc, argv); // returns after a stop; ends the process if the start fails
}
