#include "host/plot/PlotLibrary.h"

#include <dlfcn.h>

#include <filesystem>
#include <new>

#include "capi/vlwav.h"
#include "host/base/Failure.h"

namespace PlotLibrary {
namespace {

namespace fs = std::filesystem;

constexpr const char* kName = "libvlplot.so";

// With the C library, which the system has found already: in the private folder beside that, where it is
// installed, else beside it, where it is built.
std::string Path() {
    Dl_info info{};
    const fs::path library = dladdr(reinterpret_cast<void*>(&vlw_version), &info) != 0 ? info.dli_fname : "";
    const fs::path installed = library.parent_path() / VL_PRIVATE_FOLDER / kName;
    std::error_code ignored;
    return fs::exists(installed, ignored) ? installed : library.parent_path() / kName;
}

const PlotFunctions& Load() {
    void* const library = dlopen(Path().c_str(), RTLD_NOW | RTLD_LOCAL);
    void* const symbol = library ? dlsym(library, kPlotFunctionsName) : nullptr;
    if (!symbol) {
        const char* const reason = dlerror();
        throw Failure(
            std::string("This takes libvlplot.so beside the program's other libraries, and the packages "
                        "libcairo2 and libfftw3-single3; install what is missing: ") +
                (reason ? reason : kName) + '.',
            "no-library");
    }
    return *reinterpret_cast<GetPlotFunctions>(symbol)();
}

bool Append(void* context, const void* bytes, size_t size) noexcept {
    try {
        static_cast<std::string*>(context)->append(static_cast<const char*>(bytes), size);
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

}  // namespace

const PlotFunctions& Functions() {
    static const PlotFunctions& functions = Load();
    return functions;
}

std::unique_ptr<Plot, Deleter> NewPlot(const PlotShape& shape) {
    std::unique_ptr<Plot, Deleter> plot(Functions().make(shape));
    if (!plot) throw std::bad_alloc();
    return plot;
}

std::string Draw(Plot& plot, const PlotTexts& texts) {
    std::string picture;
    if (const char* const reason = plot.Draw(texts, {&picture, Append}))
        throw Failure(std::string("The picture can't be drawn: ") + reason + '.');
    return picture;
}

}  // namespace PlotLibrary
