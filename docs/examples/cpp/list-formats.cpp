// Lists the formats that can be written, in Japanese: list-formats [LANGUAGE]
#include <iomanip>
#include <iostream>
#include <vlwav.hpp>

int main(int argc, char** argv) try {
    vlw::Module module;
    module.load();  // the registered module, or the installed one
    int number = 0;
    for (const auto& [format, text] : module.formats(argc > 1 ? argv[1] : "ja"))
        std::cout << std::setw(2) << number++ << "  " << text << '\n';  // UTF-8, whatever the locale
} catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
}
