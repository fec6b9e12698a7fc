// Sets a tag of a WAV file in place and shows all of its tags: edit-tags FILE.wav KEYWORD VALUE
// The form without exceptions: what fails returns a Result.
#include <iostream>
#include <vlwav.hpp>

namespace {

vlw::Result<> Edit(vlw::Editor& editor, const char* path, const char* keyword, const char* value) {
    if (auto opened = editor.try_open(path); !opened) return opened;
    auto tags = editor.try_tags();  // lent: the editor owns them
    if (!tags) return tags.error();
    if (auto set = tags->try_set(keyword, value); !set) return set;  // "" takes a tag away
    for (const auto& [name, text] : *tags) std::cout << name << ": " << text << '\n';
    return editor.try_save();  // vlw::Flags::lossy: also if a tag can't be kept as it is
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) return std::cerr << "usage: edit-tags FILE.wav KEYWORD VALUE\n", 2;
    auto editor = vlw::Editor::try_make();
    const vlw::Result<> done =
        editor ? Edit(*editor, argv[1], argv[2], argv[3]) : vlw::Result<>(editor.error());
    if (done) return 0;
    std::cerr << done.error().text << '\n';
    return 1;
}
