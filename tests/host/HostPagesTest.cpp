#include <fmt/format.h>

#include <regex>
#include <set>

#include "tests/host/VlwavTest.h"

namespace {

using Words = std::set<std::string>;

Words Lines(const std::string& text) {
    Words lines;
    size_t at = 0;
    for (size_t end; (end = text.find('\n', at)) != text.npos; at = end + 1)
        if (end > at) lines.insert(text.substr(at, end - at));
    return lines;
}

// Every match of the first group.
Words All(const std::string& text, const std::string& pattern) {
    const std::regex regex(pattern);
    Words found;
    for (std::sregex_iterator match(text.begin(), text.end(), regex), end; match != end; ++match)
        found.insert((*match)[1]);
    return found;
}

std::string Told(const Words& words) {
    std::string text;
    for (const std::string& word : words) text += word + ' ';
    return text;
}

// Manual and completions, as the build has written them, beside what the help says.
class HostPages : public VlwavTest {
protected:
    static bool Has(const std::string& program) {
        return std::system(("command -v " + program + " >/dev/null").c_str()) == 0;  // NOLINT
    }
    static std::string Page(const std::string& name) {
        return FileContents(std::filesystem::path(PAGES_PATH) / name);
    }

    Words Commands() const { return All(Vlwav("--help").out, "\n  ([a-z]+) "); }
    std::string Help(const std::string& command) const { return Vlwav(command + " --help").out; }
    // The options of the help's tables, without its examples.
    static Words Options(const std::string& help) {
        return All(help.substr(0, help.find("\nExamples:")), "(?:\n  |, )(-[-a-z]+)(?=[ ,\n])");
    }

    // What bash offers for the last word of each line, with "files" where it is to take files itself.
    std::vector<Words> Bash(const std::vector<std::string>& lines) const {
        std::string script = "source '" PAGES_PATH
                             "/vlwav.bash'\n"
                             "compopt() { [[ \"$*\" != *'+o default'* ]] || files=''; }\n"
                             "ask() { COMP_WORDS=(\"$@\"); COMP_CWORD=$(($# - 1)); files=files; _vlwav\n"
                             "printf '%s\\n' \"${COMPREPLY[@]}\" $files end; }\n";
        for (const std::string& line : lines) script += "ask " + line + '\n';
        WriteBytes(".ask", script);
        return Answers("bash --norc .ask");
    }
    // What fish offers at the end of each line.
    std::vector<Words> Fish(const std::vector<std::string>& lines) const {
        std::string script = "source '" PAGES_PATH "/vlwav.fish'\n";
        for (const std::string& line : lines)
            script += "complete -C '" + line + "' | string replace -r '\\t.*' ''\necho end\n";
        WriteBytes(".ask", script);
        return Answers("HOME=\"$PWD\" fish --no-config .ask");
    }

private:
    std::vector<Words> Answers(const std::string& shell) const {
        const RunResult run = Run("PATH=\"$(dirname '" VLWAV_PATH "'):$PATH\"; export PATH; " + shell);
        EXPECT_EQ(run.err, "");
        std::vector<Words> answers;
        size_t at = 0;
        for (size_t end; (end = run.out.find("end\n", at)) != run.out.npos; at = end + 4)
            answers.push_back(Lines(run.out.substr(at, end - at)));
        return answers;
    }
};

TEST_F(HostPages, PagesAndCompletionsHaveEveryOptionOfTheHelp) {
    const std::string zsh = Page("_vlwav");
    const Words commands = Commands();
    ASSERT_GE(commands.size(), 10u);
    std::vector<std::string> lines;
    for (const std::string& command : commands) lines.push_back("vlwav " + command + " -");
    const std::vector<Words> inBash = Bash(lines);
    const std::vector<Words> inFish = Has("fish") ? Fish(lines) : std::vector<Words>();
    ASSERT_EQ(inBash.size(), commands.size());
    for (size_t i = 0; const std::string& command : commands) {
        SCOPED_TRACE(command);
        const std::string help = Help(command);
        Words options = Options(help);
        EXPECT_TRUE(std::ranges::all_of(help, [](char c) { return c == '\n' || (c >= ' ' && c <= '~'); }));
        for (const std::string& line : Lines(help))
            EXPECT_TRUE(line.size() <= 80 || line.starts_with("      ")) << line;

        std::string page = std::regex_replace(Page("vlwav-" + command + ".1"), std::regex(R"(\\-)"), "-");
        page.resize(page.find(".SH EXAMPLES"));
        EXPECT_EQ(Told(All(page, R"((?:\\fB|, )(-[-a-z]+)(?=[ ,\\]))")), Told(options));

        options.insert("--help");
        const size_t at = zsh.find("\n      " + command + ")\n");
        ASSERT_NE(at, zsh.npos);
        EXPECT_EQ(Told(All(zsh.substr(at, zsh.find(" ;;\n", at) - at), R"('\*?(-[-a-z]+)=?\[)")),
                  Told(options));
        EXPECT_EQ(Told(inBash[i]), Told(options));
        options.insert("-h");
        if (!inFish.empty()) {
            EXPECT_EQ(Told(inFish.at(i)), Told(options));
        }
        ++i;
    }
}

TEST_F(HostPages, ThreeExamplesOfEachCommandAskForWhatThereIs) {
    for (const std::string& command : Commands()) {
        const std::string help = Help(command);
        Words known = Options(help);
        known.insert("--help");
        const std::string examples = help.substr(help.find("\nExamples:"));
        EXPECT_EQ(All(examples, "\n      ([^\n]+)").size(), 3u) << examples;
        // A line can call the program several times, among others.
        const Words calls = All(examples, "vlwav (" + command + "\\b[^\n|&]*)");
        EXPECT_FALSE(calls.empty()) << examples;
        for (const std::string& call : calls)
            for (const std::string& option : All(call.substr(0, call.find(" -- ")), " (-[-a-z]+)"))
                EXPECT_TRUE(known.contains(option)) << call;
    }
}

struct Asked {
    const char* line;
    const char* offers;
};

TEST_F(HostPages, ShellsOfferWhatFits) {
    WriteBytes("song 1.wav", "");
    const std::string formats = Told([] {
        Words words;
        for (int i = 0; i < 28; ++i) words.insert(std::to_string(i));
        return words;
    }());
    const auto expect = [](const std::vector<Asked>& rows, auto&& ask) {
        std::vector<std::string> lines;
        for (const Asked& row : rows) lines.emplace_back(row.line);
        const std::vector<Words> offers = ask(lines);
        ASSERT_EQ(offers.size(), rows.size());
        for (size_t i = 0; i < rows.size(); ++i) EXPECT_EQ(Told(offers[i]), rows[i].offers) << rows[i].line;
    };
    // Bash takes "=" for a word of its own.
    expect({{"vlwav con", "convert "},
            {"vlwav --encoding = utf-8 ta", "tag "},
            {"vlwav help pic", "picture "},
            {"vlwav tag --set ti", "title= "},
            {"vlwav tag --clear = ti", "title "},
            {"vlwav convert --format =", formats.c_str()},
            {"vlwav convert --rate ''", ""},
            {"vlwav convert s", "files "},
            {"vlwav convert -- -", "files "},
            {"vlwav tag --from =", "files "},
            {"vlwav --module s", "files "}},
           [&](const auto& lines) { return Bash(lines); });
    if (!Has("fish")) GTEST_SKIP() << "there is no fish";
    expect({{"vlwav --encoding utf-8 ta", "tag "},
            {"vlwav help pic", "picture "},
            {"vlwav tag --set ti", "title= "},
            {"vlwav convert --format ", formats.c_str()},
            {"vlwav convert --rate ", ""},
            {"vlwav info s", "song 1.wav "},
            {"vlwav where s", ""}},
           [&](const auto& lines) { return Fish(lines); });
}

// Its completion runs in its line editor alone: there, in a terminal of its own.
TEST_F(HostPages, ZshCompletesItsLine) {
    if (!Has("zsh")) GTEST_SKIP() << "there is no zsh";
    WriteBytes("song 1.wav", "");
    WriteBytes("ask.zsh", R"(zmodload zsh/zpty
zpty shell "HOME=$PWD zsh -f -i"
zpty -w shell "PS1=; KEYTIMEOUT=1; fpath=($1 \$fpath); path=($2 \$path); autoload -Uz compinit; compinit -D -u"
zpty -w shell 'show() { zle complete-word; print -r -- "<<$BUFFER>>"; BUFFER= }; zle -N show; bindkey "^T" show'
zpty -w shell 'print rea""dy'
zpty -r -m shell ready '*ready*'
shift 2
for line; do
  zpty -w -n shell "$line"$'\024'
  zpty -r -m shell answer '*<<*>>*'
  answer=${answer##*<<}
  print -r -- "${answer%%>>*}"
done
)");
    const RunResult run = Run("timeout 60 zsh -f ask.zsh '" PAGES_PATH "' \"$(dirname '" VLWAV_PATH
                              "')\" 'vlwav conv' 'vlwav convert --rec' 'vlwav tag --set ti' 'vlwav info so' "
                              "'vlwav help pic' 'vlwav convert --format=27'");
    EXPECT_EQ(run.out,
              "vlwav convert \nvlwav convert --recursive \nvlwav tag --set title=\nvlwav info song\\ 1.wav \n"
              "vlwav help picture \nvlwav convert --format=27 \n")
        << run.err;
}

TEST_F(HostPages, TheManualIsSound) {
    if (!Has("mandoc") && !Has("groff")) GTEST_SKIP() << "there is nothing that reads it";
    const std::string pages = "'" PAGES_PATH "'/*.1";
    if (Has("mandoc")) {
        EXPECT_EQ(Run("mandoc -Tlint " + pages).out, "");
    }
    if (Has("groff")) {
        EXPECT_EQ(Run("groff -man -ww -z " + pages).err, "");
    }
}

}  // namespace
