/**
 * @file vlwav.hpp
 * vlwav.h for C++17 and later: the same library with owners, values, ranges and exceptions. There is nothing
 * to link but the C library, libvlwav.so.1.
 *
 *     vlw::Reader reader;
 *     reader.output(48000, 2);
 *     reader.open("in.wav");
 *     for (auto block : reader.blocks(4096)) play(block.data(), block.frames());
 *
 * Two forms. Each operation that can fail has two: `open` throws vlw::Error, `try_open` returns a vlw::Result
 * and throws nothing of the library's. They are declared side by side, under one comment. A constructor's
 * second form is `try_make`. What can't fail has one form. std::bad_alloc may come out of either where a text
 * or a buffer of the program's finds no memory.
 *
 * Ends. That the audio ends, or was cut off before the end that its file promises, is a value (vlw::Ending)
 * in both forms.
 *
 * Owners. Module, Reader, Writer, Editor, Converter, Tags and Bytes own what they hold, can be moved, and let
 * go of it at their end: an unfinished file is dropped, unsaved tags are too. One that was moved from fails
 * with Code::bad_argument.
 *
 * Lent. What is returned as a view (std::string_view, std::span, Block, Picture, TagsRef) lives as long as
 * vlwav.h says. The rest (frames, text, threads, fork, signals) is as vlwav.h has it. An object is used by
 * one thread at a time, as its handle is; a loaded Module by any number.
 *
 * Decisions: Result has the names of std::expected, but dereferencing a failed one throws instead of being
 * undefined.
 */
#ifndef VLWAV_HPP
#define VLWAV_HPP

#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <functional>
#include <iterator>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>
#if __cplusplus >= 202002L
#include <span>
#endif

#include "vlwav.h"

namespace vlw {

// ---- results ----------------------------------------------------------------------------------------------

/** The codes of vlwav.h. A later library may have others; their number is kept as it is. */
enum class Code : int {
    ok = VLW_OK,                        ///< no failure
    end = VLW_END,                      ///< the end, as it should be
    cut = VLW_CUT,                      ///< the end of what is there, before the end that the file promises
    failed = VLW_FAILED,                ///< no closer reason
    no_memory = VLW_NO_MEMORY,          ///< the library found no memory
    bad_argument = VLW_BAD_ARGUMENT,    ///< null where something is needed, a number out of range
    bad_state = VLW_BAD_STATE,          ///< not open, or open where it mustn't be
    system = VLW_SYSTEM,                ///< the system refused or failed; Failure::system has its number
    not_found = VLW_NOT_FOUND,          ///< no such file or folder
    no_permission = VLW_NO_PERMISSION,  ///< the system forbids it
    exists = VLW_EXISTS,                ///< there is such a file, and Flags::overwrite wasn't given
    in_use = VLW_IN_USE,                ///< someone else has the file open and doesn't share it
    no_space = VLW_NO_SPACE,            ///< disk or quota is full
    not_audio = VLW_NOT_AUDIO,          ///< no file of a kind that is read
    damaged = VLW_DAMAGED,              ///< such a file, but unusable
    no_decoder = VLW_NO_DECODER,        ///< the decoder for its audio isn't installed
    unsupported = VLW_UNSUPPORTED,      ///< a rate, channel count or width that can't be had
    not_seekable = VLW_NOT_SEEKABLE,    ///< the source gives its bytes in order only
    unknown_keyword = VLW_UNKNOWN_KEYWORD,  ///< no tag has this keyword
    bad_value = VLW_BAD_VALUE,              ///< text that is no UTF-8, or no number where one is needed
    would_lose = VLW_WOULD_LOSE,            ///< a tag or picture that the file can't keep as it is
    too_large = VLW_TOO_LARGE,              ///< beyond what a WAV file can hold, 4 GiB
    cancelled = VLW_CANCELLED,              ///< by the program's own progress function
    no_module = VLW_NO_MODULE               ///< the codec module wasn't found or isn't one
};

/** What failed, and why: a copy that outlives the handle. */
struct Failure {
    Code code = Code::ok;    ///< never `ok` in a failure
    int system = 0;          ///< the system's number (errno); 0 for none
    std::string text;        ///< a sentence for people: which file, what failed and why
    std::string path;        ///< the file in question; empty where it has no name
    std::size_t frames = 0;  ///< of a failed read: the good frames that came before it; 0 elsewhere
};

/** A Failure as an exception; `what()` is its sentence. */
class Error : public std::runtime_error {
public:
    /** Throwable, with a copy of the failure that all copies of the exception share. */
    explicit Error(Failure failure)
        : std::runtime_error(failure.text), m_failure(std::make_shared<const Failure>(std::move(failure))) {}

    /** All of it. */
    const Failure& failure() const noexcept { return *m_failure; }
    /** The code, never `ok`. */
    Code code() const noexcept { return m_failure->code; }
    /** The system's number (errno); 0 for none. */
    int system() const noexcept { return m_failure->system; }
    /** The sentence for people. */
    const std::string& text() const noexcept { return m_failure->text; }
    /** The file in question; empty where it has no name. */
    const std::string& path() const noexcept { return m_failure->path; }
    /** Of a failed read: the good frames that came before the failure. */
    std::size_t frames() const noexcept { return m_failure->frames; }

private:
    std::shared_ptr<const Failure> m_failure;  // an exception is copied without throwing
};

namespace detail {

/** What error() of a success refers to. */
inline const Failure& no_failure() {
    static const Failure none;
    return none;
}

}  // namespace detail

/** A value, or the Failure that stands in its place. */
template <class T = void>
class [[nodiscard]] Result {
public:
    /** A success. */
    Result(T value)
        : m_content(std::in_place_index<0>, std::move(value)) {}  // NOLINT(google-explicit-constructor)
    /** A failure. */
    Result(Failure failure) : m_content(std::in_place_index<1>, std::move(failure)) {}

    /** Whether there is a value. */
    bool has_value() const noexcept { return m_content.index() == 0; }
    /** Whether there is a value. */
    explicit operator bool() const noexcept { return has_value(); }
    /** The value. Throws Error where there is none. */
    T& value() & { return ok_or_throw(), *std::get_if<0>(&m_content); }
    const T& value() const& { return ok_or_throw(), *std::get_if<0>(&m_content); }
    T value() && { return ok_or_throw(), std::move(*std::get_if<0>(&m_content)); }
    /** The value. Throws Error where there is none. */
    T& operator*() & { return value(); }
    const T& operator*() const& { return value(); }
    T operator*() && { return std::move(*this).value(); }
    /** Into the value. Throws Error where there is none. */
    T* operator->() { return &value(); }
    const T* operator->() const { return &value(); }
    /** The value, or `other` where there is none. */
    T value_or(T other) const& { return has_value() ? value() : std::move(other); }
    /** What failed; of a success one with Code::ok and no text. Lent by this object. */
    const Failure& error() const noexcept {
        const Failure* const failure = std::get_if<1>(&m_content);
        return failure ? *failure : detail::no_failure();
    }

private:
    void ok_or_throw() const {
        if (!has_value()) throw Error(error());
    }

    std::variant<T, Failure> m_content;
};

/** Success, or what failed. */
template <>
class [[nodiscard]] Result<void> {
public:
    /** A success. */
    Result() = default;
    /** A failure. */
    Result(Failure failure) : m_failure(std::move(failure)) {}

    /** Whether it succeeded. */
    bool has_value() const noexcept { return !m_failure; }
    /** Whether it succeeded. */
    explicit operator bool() const noexcept { return has_value(); }
    /** Throws Error where it failed. */
    void value() const {
        if (m_failure) throw Error(*m_failure);
    }
    /** What failed; of a success one with Code::ok and no text. Lent by this object. */
    const Failure& error() const noexcept { return m_failure ? *m_failure : detail::no_failure(); }

private:
    std::optional<Failure> m_failure;
};

/** A sentence for a code, also for an unknown one. Lent for ever. */
inline std::string_view error_text(Code code) { return vlw_error_text(static_cast<vlw_code>(code)); }
/** The library that runs, as VLW_VERSION has it. */
inline std::uint32_t version() noexcept { return vlw_version(); }
/** The library that runs, as text ("1.0.0"), lent for ever. */
inline std::string_view version_text() { return vlw_version_text(); }

// ---- shared shapes ----------------------------------------------------------------------------------------

/** How the audio goes on where a read, a seek or a conversion stopped. */
enum class Ending {
    more,  ///< not at the end
    end,   ///< the end, as it should be
    cut    ///< the end of what is there, before the end that the file promises
};

/** What may happen to files that are there, and to what a file can't keep. Combined by `|`. */
enum class Flags : std::uint32_t {
    none = 0,
    overwrite =
        VLW_OVERWRITE,      ///< a file that is there may be replaced, in one step, when the new one is whole
    lossy = VLW_LOSSY,      ///< tags and pictures that the file can't keep may change or go
    partial = VLW_PARTIAL,  ///< of a source that ends early what is there is enough
    no_tags = VLW_NO_TAGS,  ///< the source's tags aren't carried over
    no_chunks = VLW_NO_CHUNKS  ///< nor its other chunks
};
/** Both. */
constexpr Flags operator|(Flags a, Flags b) noexcept {
    return static_cast<Flags>(static_cast<std::uint32_t>(a) | static_cast<std::uint32_t>(b));
}

/** How text of a file's "INFO" list is read and written; vlw_text has the rules. */
enum class Text {
    automatic = VLW_TEXT_AUTO,     ///< as the file has it
    windows_1252 = VLW_TEXT_1252,  ///< Windows-1252
    utf8 = VLW_TEXT_UTF8           ///< UTF-8
};

/** A text that a function takes for the length of its call, from whatever the program has it in. UTF-8. One
 * with a zero byte inside counts as no text at all: the library would see its beginning alone. */
class Chars {
public:
    /** A terminated text, read during the call. */
    Chars(const char* text) noexcept : m_text(text) {}
    /** A string, read during the call. */
    Chars(const std::string& text) noexcept
        : m_text(text.find('\0') == std::string::npos ? text.c_str() : nullptr) {}
    /** Any characters; a terminated copy is made of them. */
    Chars(std::string_view text) : m_copy(text), m_text(Chars(m_copy).m_text) {}
#ifdef __cpp_char8_t
    /** A literal of the kind u8"…". */
    Chars(const char8_t* text) noexcept : m_text(reinterpret_cast<const char*>(text)) {}
#endif
    Chars(const Chars&) = delete;
    Chars& operator=(const Chars&) = delete;

    /** The text, terminated; null for none. */
    const char* c_str() const noexcept { return m_text; }

private:
    std::string m_copy;
    const char* m_text;
};

/** The name of a file that a function takes for the length of its call: the bytes of the system. */
class Path : public Chars {
public:
    using Chars::Chars;
    /** A path of the standard library, read during the call. */
    Path(const std::filesystem::path& path) noexcept : Chars(path.native()) {}
};

/** What a file is, or is to be. */
struct Format {
    std::uint32_t rate = 0;              ///< frames a second
    std::uint32_t channels = 0;          ///< samples in a frame
    std::uint32_t bits = 0;              ///< of a stored sample; 0 where the codec has no fixed number
    std::uint32_t block_bytes = 0;       ///< of a frame in PCM, else of a codec's block; 0: not known
    std::uint32_t channel_mask = 0;      ///< bit n: speaker n of the WAV format; 0: not told
    std::uint32_t codec_tag = 0;         ///< the WAV format tag; 0: the container has none
    std::optional<std::int64_t> frames;  ///< that are there, at `rate`; none: can't be told beforehand
    std::optional<std::int64_t> frames_promised;  ///< by the file's header, at `rate`; none: it doesn't tell
    std::string_view container;                   ///< "WAV", "AIFF", …; lent for ever
    std::string_view codec;                       ///< "PCM", "IMA ADPCM", …; lent for ever

    /** How long the frames that are there last; none where their number can't be told. */
    std::optional<std::chrono::duration<double>> duration() const noexcept {
        if (!frames || rate == 0) return std::nullopt;
        return std::chrono::duration<double>(static_cast<double>(*frames) / rate);
    }
};

/** A format that can be written, and its text for people. */
struct StockFormat {
    Format format;     ///< without a length
    std::string text;  ///< "44.100 kHz, 16 Bits, Stereo"
};

/** What one read brought. */
struct Read {
    std::size_t frames =
        0;  ///< that came; all that were asked for if `ending` is `more`, never all otherwise
    Ending ending = Ending::more;  ///< why it weren't all
    /** Whether the audio goes on. */
    explicit operator bool() const noexcept { return ending == Ending::more; }
};

namespace detail {

/** Frees a block or a handle by the function of vlwav.h. */
template <auto Free>
struct Freer {
    template <class T>
    void operator()(T* owned) const noexcept {
        Free(owned);
    }
};

inline std::string_view view(const char* text) { return text ? std::string_view(text) : std::string_view(); }

inline std::optional<std::int64_t> length(std::int64_t frames) noexcept {
    return frames == VLW_UNKNOWN ? std::nullopt : std::optional<std::int64_t>(frames);
}

/** For a failure. A record that tells of another one, or none, leaves the sentence of the code. */
inline Failure failure(vlw_code code, const vlw_error* record = nullptr, std::size_t frames = 0) {
    if (!record || record->code != code)
        return {static_cast<Code>(code), 0, vlw_error_text(code), {}, frames};
    return {static_cast<Code>(code), record->system, record->text, record->path, frames};
}

/** For any code: one that isn't negative tells how the audio goes on. */
inline Result<Ending> ending(vlw_code code, const vlw_error* record = nullptr) {
    if (code < 0) return failure(code, record);
    if (code == VLW_OK) return Ending::more;
    return code == VLW_CUT ? Ending::cut : Ending::end;
}

/** A record as the library wants it: zeros, and its size. */
template <class Record>
Record sized() noexcept {
    Record record = {};
    record.size = sizeof record;
    return record;
}

inline Format format(const vlw_format& record) {
    return {record.rate,
            record.channels,
            record.bits,
            record.block_bytes,
            record.channel_mask,
            record.codec_tag,
            length(record.frames),
            length(record.frames_promised),
            view(record.container),
            view(record.codec)};
}

/** The format that a query of vlwav.h tells of a handle. */
template <class Handle>
Result<Format> format(vlw_code (*query)(const Handle*, vlw_format*), const Handle* handle) {
    auto record = sized<vlw_format>();
    const vlw_code code = query(handle, &record);
    if (code != VLW_OK) return failure(code);
    return format(record);
}

/** An owner of one handle: freed at the end, moved and not copied. */
template <class T, void (*Free)(T*), const vlw_error* (*LastError)(const T*)>
class Handle {
public:
    /** The handle, for functions of vlwav.h; stays owned. Null in an object that was moved from. */
    T* get() const noexcept { return m_handle.get(); }
    /** Gives the handle up: the caller frees it. */
    T* release() noexcept { return m_handle.release(); }

protected:
    explicit Handle(T* handle) noexcept : m_handle(handle) {}

    /** What a call on the handle came to, where only success and failure are told. */
    Result<> result(vlw_code code) const {
        if (code < 0) return detail::failure(code, last_error());
        return {};
    }
    Result<Ending> ending(vlw_code code) const { return detail::ending(code, last_error()); }
    const vlw_error* last_error() const noexcept { return LastError(get()); }

private:
    std::unique_ptr<T, Freer<Free>> m_handle;
};

}  // namespace detail

// ---- the module -------------------------------------------------------------------------------------------

/** A codec module, loaded once for many handles, which keep it alive for themselves. A handle that is made
 * without one loads the default module when it first opens a file. */
class Module : public detail::Handle<vlw_module, vlw_module_free, vlw_module_error> {
public:
    /** One that isn't loaded yet. Code::no_memory. */
    Module() : Module(try_make().value()) {}
    static Result<Module> try_make() {
        vlw_module* made = nullptr;
        if (const vlw_code code = vlw_module_new(&made); code != VLW_OK) return detail::failure(code);
        return Module(made);
    }
    /** Takes over a handle. */
    explicit Module(vlw_module* owned) noexcept : Handle(owned) {}

    /** Loads the registered module, else that of the library's installation. Once: Code::bad_state.
     * Code::no_module. */
    void load() { try_load().value(); }
    Result<> try_load() { return result(vlw_module_load(get(), nullptr)); }
    /** Loads the module of that file. */
    void load(const Path& path) { try_load(path).value(); }
    Result<> try_load(const Path& path) {
        // A null path would stand for the default module.
        return path.c_str() ? result(vlw_module_load(get(), path.c_str()))
                            : detail::failure(VLW_BAD_ARGUMENT);
    }

    /** Its file and its version; empty before it is loaded. Lent as long as this object lives. */
    std::string_view path() const { return detail::view(vlw_module_path(get())); }
    std::string_view version() const { return detail::view(vlw_module_version(get())); }

    /** The formats that can be written, in the order of their numbers, with texts in a language: "ja" or
     * "pt-BR"; "de-AT" falls back to "de", what is unknown to English. Code::bad_state before it is loaded.
     */
    std::vector<StockFormat> formats(const Chars& language = "en") const {
        return try_formats(language).value();
    }
    Result<std::vector<StockFormat>> try_formats(const Chars& language = "en") const {
        std::vector<StockFormat> formats;
        for (;;) {
            auto record = detail::sized<vlw_format>();
            const std::size_t index = formats.size();
            vlw_code code = vlw_module_format(get(), index, &record);
            if (code > VLW_OK) return formats;
            char* text = nullptr;
            if (code == VLW_OK) code = vlw_module_format_text(get(), index, language.c_str(), &text);
            const std::unique_ptr<char, detail::Freer<vlw_free>> owned(text);
            if (code != VLW_OK) return detail::failure(code);
            formats.push_back({detail::format(record), text});
        }
    }
};

namespace detail {

/** Makes the handle of an owner that works through a module; null for the default one. */
template <class Owner, class T>
Result<Owner> make(vlw_code (*create)(vlw_module*, T**), vlw_module* module) {
    T* made = nullptr;
    if (const vlw_code code = create(module, &made); code != VLW_OK) return failure(code);
    return Owner(made);
}

}  // namespace detail

// ---- tags and pictures ------------------------------------------------------------------------------------

/** A tag's keyword, and what is known of it. */
struct Keyword {
    std::string_view name;   ///< lent for ever
    bool is_number = false;  ///< its text is a number
    bool is_kept = false;    ///< WAV files keep it; others are read only
};

/** All keywords, "title" first. */
inline std::vector<Keyword> keywords() {
    std::vector<Keyword> all;
    while (const char* const name = vlw_keyword(all.size())) {
        const std::uint32_t flags = vlw_keyword_flags(all.size());
        all.push_back({name, (flags & VLW_KEYWORD_NUMBER) != 0, (flags & VLW_KEYWORD_KEPT) != 0});
    }
    return all;
}

/** A keyword and its text, for `for (auto [keyword, value] : tags)`. Both are lent until the tags' next
 * change. */
using Tag = std::pair<std::string_view, std::string_view>;

/** A picture as the bytes of its image file, lent until the tags' next change. */
struct Picture {
    std::int32_t number = 0;     ///< what it shows; 3 is the front cover
    const void* data = nullptr;  ///< the image file
    std::size_t size = 0;        ///< its bytes
#if __cplusplus >= 202002L
    /** The image file. */
    std::span<const std::byte> bytes() const noexcept { return {static_cast<const std::byte*>(data), size}; }
#endif
};

namespace detail {

/** Counts through what is told by index; `At` returns the element of a place. */
template <class Value, Value (*At)(const vlw_tags*, std::size_t)>
class IndexIterator {
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = Value;
    using difference_type = std::ptrdiff_t;
    using pointer = void;
    using reference = Value;

    IndexIterator() = default;
    IndexIterator(const vlw_tags* tags, std::size_t index) noexcept : m_tags(tags), m_index(index) {}
    Value operator*() const { return At(m_tags, m_index); }
    IndexIterator& operator++() noexcept { return ++m_index, *this; }
    IndexIterator operator++(int) noexcept { return {m_tags, m_index++}; }
    friend bool operator==(const IndexIterator& a, const IndexIterator& b) noexcept {
        return a.m_index == b.m_index;
    }
    friend bool operator!=(const IndexIterator& a, const IndexIterator& b) noexcept {
        return a.m_index != b.m_index;
    }

private:
    const vlw_tags* m_tags = nullptr;
    std::size_t m_index = 0;
};

/** Elements that are told by index, from the first to the last. */
template <class Iterator>
class IndexRange {
public:
    IndexRange(const vlw_tags* tags, std::size_t count) noexcept : m_tags(tags), m_count(count) {}
    Iterator begin() const noexcept { return {m_tags, 0}; }
    Iterator end() const noexcept { return {m_tags, m_count}; }
    std::size_t size() const noexcept { return m_count; }
    bool empty() const noexcept { return m_count == 0; }

private:
    const vlw_tags* m_tags;
    std::size_t m_count;
};

inline Tag tag_at(const vlw_tags* tags, std::size_t index) {
    const char *keyword = nullptr, *value = nullptr;
    vlw_tags_at(tags, index, &keyword, &value);  // past the last: both stay null
    return {view(keyword), view(value)};
}

inline Picture picture_at(const vlw_tags* tags, std::size_t index) {
    Picture picture;
    vlw_tags_picture_at(tags, index, &picture.number, &picture.data, &picture.size);
    return picture;
}

}  // namespace detail

/** Tags and pictures, whoever owns them: Tags its own, TagsRef those of someone else. A keyword has one text
 * or none. Keywords come in any case of ASCII letters. */
class AnyTags {
public:
    /** Steps from tag to tag. */
    using iterator = detail::IndexIterator<Tag, detail::tag_at>;
    /** The pictures by ascending number. */
    using Pictures = detail::IndexRange<detail::IndexIterator<Picture, detail::picture_at>>;

    AnyTags& operator=(const AnyTags&) = delete;

    /** The handle, for functions of vlwav.h; its owner stays the same. */
    vlw_tags* get() const noexcept { return m_tags; }

    /** How many tags there are, without pictures. */
    std::size_t size() const noexcept { return vlw_tags_count(m_tags); }
    /** Whether there are no tags; pictures don't count. */
    bool empty() const noexcept { return size() == 0; }
    /** The tags in the order in which they are shown. A change ends the walk. */
    iterator begin() const noexcept { return {m_tags, 0}; }
    iterator end() const noexcept { return {m_tags, size()}; }
    /** A tag's text, lent until the next change; none for a tag that isn't there and a word that is no
     * keyword. */
    std::optional<std::string_view> get(const Chars& keyword) const {
        const char* const value = vlw_tags_get(m_tags, keyword.c_str());
        return value ? std::optional<std::string_view>(value) : std::nullopt;
    }

    /** Sets a tag; "" takes it away. Code::unknown_keyword, Code::bad_value. */
    void set(const Chars& keyword, const Chars& value) { try_set(keyword, value).value(); }
    Result<> try_set(const Chars& keyword, const Chars& value) {
        // Null would take the tag away.
        return value.c_str() ? result(vlw_tags_set(m_tags, keyword.c_str(), value.c_str()))
                             : detail::failure(VLW_BAD_VALUE);
    }
    /** Sets a tag to a number; 0 takes it away. */
    void set(const Chars& keyword, std::int64_t number) { try_set(keyword, number).value(); }
    Result<> try_set(const Chars& keyword, std::int64_t number) {
        return try_set(keyword, std::to_string(number));
    }
    /** Takes a tag away, which may be absent. Code::unknown_keyword. */
    void remove(const Chars& keyword) { try_remove(keyword).value(); }
    Result<> try_remove(const Chars& keyword) {
        return result(vlw_tags_set(m_tags, keyword.c_str(), nullptr));
    }
    /** Takes all tags and pictures away. */
    void clear() noexcept { vlw_tags_clear(m_tags); }
    /** Takes over the tags and pictures of others in place of what is there. */
    void assign(const AnyTags& from) { try_assign(from).value(); }
    Result<> try_assign(const AnyTags& from) { return result(vlw_tags_copy(m_tags, from.m_tags)); }

    /** The pictures by ascending number. A change ends the walk. */
    Pictures pictures() const noexcept { return {m_tags, vlw_tags_picture_count(m_tags)}; }
    /** The picture to show where one is shown: the front cover, else the next best; none without pictures. */
    std::optional<Picture> best_picture() const noexcept {
        Picture picture;
        if (vlw_tags_best_picture(m_tags, &picture.number, &picture.data, &picture.size) != VLW_OK) return {};
        return picture;
    }
    /** Keeps a copy of an image file under a number. Code::bad_value for what is no JPEG, PNG, GIF or BMP. */
    void set_picture(std::int32_t number, const void* bytes, std::size_t size) {
        try_set_picture(number, bytes, size).value();
    }
    Result<> try_set_picture(std::int32_t number, const void* bytes, std::size_t size) {
        // Null would take the picture away.
        return bytes ? result(vlw_tags_set_picture(m_tags, number, bytes, size))
                     : detail::failure(VLW_BAD_VALUE);
    }
#if __cplusplus >= 202002L
    void set_picture(std::int32_t number, std::span<const std::byte> bytes) {
        set_picture(number, bytes.data(), bytes.size());
    }
    Result<> try_set_picture(std::int32_t number, std::span<const std::byte> bytes) {
        return try_set_picture(number, bytes.data(), bytes.size());
    }
#endif
    /** Takes a picture away, which may be absent. */
    void remove_picture(std::int32_t number) { try_remove_picture(number).value(); }
    Result<> try_remove_picture(std::int32_t number) {
        return result(vlw_tags_set_picture(m_tags, number, nullptr, 0));
    }

protected:
    /** For owners: whose tags these are is theirs to say. */
    explicit AnyTags(vlw_tags* tags) noexcept : m_tags(tags) {}
    AnyTags(const AnyTags&) = default;
    ~AnyTags() = default;
    /** From now on the tags of another handle. */
    void refer_to(vlw_tags* tags) noexcept { m_tags = tags; }

private:
    Result<> result(vlw_code code) const {
        if (code < 0) return detail::failure(code, vlw_tags_error(m_tags));
        return {};
    }

    vlw_tags* m_tags;
};

/** Tags that belong to someone else, such as an editor: a copy refers to the same ones. */
class TagsRef : public AnyTags {
public:
    /** Refers to a handle, which must live as long as it is used. */
    explicit TagsRef(vlw_tags* lent) noexcept : AnyTags(lent) {}
    TagsRef(const TagsRef&) = default;
    TagsRef& operator=(const TagsRef& other) noexcept { return refer_to(other.get()), *this; }
};

/** Tags and pictures of the program's own, of no file. */
class Tags : public AnyTags {
public:
    /** None. Code::no_memory. */
    Tags() : Tags(try_make().value()) {}
    static Result<Tags> try_make() {
        vlw_tags* made = nullptr;
        if (const vlw_code code = vlw_tags_new(&made); code != VLW_OK) return detail::failure(code);
        return Tags(made);
    }
    /** Takes over a handle. */
    explicit Tags(vlw_tags* owned) noexcept : AnyTags(owned), m_owned(owned) {}
    Tags(Tags&& other) noexcept : Tags(other.release()) {}
    Tags& operator=(Tags&& other) noexcept {
        m_owned.reset(other.release());
        refer_to(m_owned.get());
        return *this;
    }
    ~Tags() = default;

    /** As AnyTags has it, but not of tags that are gone before the walk begins. */
    Pictures pictures() const& noexcept { return AnyTags::pictures(); }
    Pictures pictures() && = delete;
    /** Gives the handle up: the caller frees it. */
    vlw_tags* release() noexcept { return refer_to(nullptr), m_owned.release(); }

private:
    std::unique_ptr<vlw_tags, detail::Freer<vlw_tags_free>> m_owned;
};

// ---- a program's own stream -------------------------------------------------------------------------------

/** A source or target of bytes of the program's own, as functions; what isn't needed stays empty. They are
 * called on the thread that called the library or on one of its own, never on two at once, and live until the
 * file is closed. What they throw stays with them and becomes a failure with Code::system: the number of a
 * std::system_error, else EIO. */
struct Stream {
    /** Reads: the bytes got, any count from 1; 0: the end; -errno: failed. */
    std::function<std::int64_t(void* buffer, std::size_t bytes)> read;
    /** Writes: the bytes taken, any count from 1; -errno: failed. */
    std::function<std::int64_t(const void* bytes, std::size_t count)> write;
    /** Moves, as lseek: the new place; -errno: failed. Empty: the bytes come in order only. */
    std::function<std::int64_t(std::int64_t offset, int whence)> seek;
};

namespace detail {

template <class Object, class = void>
struct CanRead : std::false_type {};
template <class Object>
struct CanRead<Object,
               std::void_t<decltype(std::declval<Object&>().read(std::declval<void*>(), std::size_t()))>>
    : std::true_type {};

template <class Object, class = void>
struct CanWrite : std::false_type {};
template <class Object>
struct CanWrite<
    Object, std::void_t<decltype(std::declval<Object&>().write(std::declval<const void*>(), std::size_t()))>>
    : std::true_type {};

template <class Object, class = void>
struct CanSeek : std::false_type {};
template <class Object>
struct CanSeek<Object, std::void_t<decltype(std::declval<Object&>().seek(std::int64_t(), int()))>>
    : std::true_type {};

/** The functions of a Stream as vlwav.h calls them. `user` is the Stream, which `close` deletes. */
class StreamCalls {
public:
    static vlw_stream of(Stream* stream) noexcept {
        auto record = sized<vlw_stream>();
        record.user = stream;
        if (stream->read) record.read = read;
        if (stream->write) record.write = write;
        if (stream->seek) record.seek = seek;
        record.close = close;
        return record;
    }

private:
    static Stream& at(void* user) noexcept { return *static_cast<Stream*>(user); }

    template <class Work>
    static std::int64_t guarded(Work&& work) noexcept {
        try {
            return work();
        } catch (const std::system_error& error) {
            const std::error_code& code = error.code();
            const bool is_errno =
                code.category() == std::generic_category() || code.category() == std::system_category();
            return is_errno && code.value() > 0 ? -code.value() : -EIO;
        } catch (const std::bad_alloc&) {
            return -ENOMEM;
        } catch (...) {
            return -EIO;
        }
    }
    static std::int64_t read(void* user, void* buffer, std::size_t bytes) noexcept {
        return guarded([&] { return at(user).read(buffer, bytes); });
    }
    static std::int64_t write(void* user, const void* bytes, std::size_t count) noexcept {
        return guarded([&] { return at(user).write(bytes, count); });
    }
    static std::int64_t seek(void* user, std::int64_t offset, int whence) noexcept {
        return guarded([&] { return at(user).seek(offset, whence); });
    }
    static void close(void* user) noexcept { delete static_cast<Stream*>(user); }
};

}  // namespace detail

/** The Stream of an object with `read(void*, size_t)`, `write(const void*, size_t)` and `seek(int64_t, int)`,
 * or those of them that it has. The object is kept until the file is closed. */
template <class Object>
Stream stream(std::shared_ptr<Object> object) {
    static_assert(detail::CanRead<Object>::value || detail::CanWrite<Object>::value,
                  "a stream needs read(void*, size_t) or write(const void*, size_t)");
    Stream made;
    if (!object) return made;
    if constexpr (detail::CanRead<Object>::value)
        made.read = [object](void* buffer, std::size_t bytes) { return object->read(buffer, bytes); };
    if constexpr (detail::CanWrite<Object>::value)
        made.write = [object](const void* bytes, std::size_t count) { return object->write(bytes, count); };
    if constexpr (detail::CanSeek<Object>::value)
        made.seek = [object](std::int64_t offset, int whence) { return object->seek(offset, whence); };
    return made;
}

// ---- reading ----------------------------------------------------------------------------------------------

/** Some frames in a row, lent by the range that brought them until its next step; the program may change
 * them. T is std::int16_t or float. */
template <class T>
class Block {
public:
    /** Of samples that live elsewhere. */
    Block(T* data, std::size_t frames, std::uint32_t channels) noexcept
        : m_data(data), m_frames(frames), m_channels(channels) {}

    /** The samples, interleaved. */
    T* data() const noexcept { return m_data; }
    /** How many frames there are; never 0 in a block of a range. */
    std::size_t frames() const noexcept { return m_frames; }
    /** Samples in a frame. */
    std::uint32_t channels() const noexcept { return m_channels; }
    /** How many samples there are, of all channels. */
    std::size_t size() const noexcept { return m_frames * m_channels; }
    /** The samples as a range. */
    T* begin() const noexcept { return m_data; }
    T* end() const noexcept { return m_data + size(); }
    /** A sample by its place among all; `index` is below size(). */
    T& operator[](std::size_t index) const noexcept { return m_data[index]; }
    /** A sample by its frame and its channel, both from 0. */
    T& operator()(std::size_t frame, std::uint32_t channel) const noexcept {
        return m_data[frame * m_channels + channel];
    }
#if __cplusplus >= 202002L
    /** The samples as a span. */
    operator std::span<T>() const noexcept { return {m_data, size()}; }
#endif

private:
    T* m_data;
    std::size_t m_frames;
    std::uint32_t m_channels;
};

class Reader;

/** What Reader::blocks and Reader::try_blocks return: the frames from the reader's place to the end, block by
 * block. Can be walked once. Elements are Block<T>, or Result<Block<T>> in the form that doesn't throw. All
 * but the last are full. Good frames before a failure come as a block of their own, the failure after them;
 * then the range is at its end, and a new one tries again. */
template <class T, bool Throws>
class Blocks {
public:
    /** Steps from block to block. */
    class iterator {
    public:
        /** What every input iterator tells of itself. */
        using iterator_category = std::input_iterator_tag;
        using value_type = std::conditional_t<Throws, Block<T>, Result<Block<T>>>;
        using difference_type = std::ptrdiff_t;
        using pointer = void;
        using reference = value_type;

        /** At the end of any range, or at the next block of one: each step reads a block. */
        iterator() = default;
        explicit iterator(Blocks* range) : m_range(range) { ++*this; }
        value_type operator*() const { return m_range->current(); }
        iterator& operator++() {
            if (!m_range->advance()) m_range = nullptr;
            return *this;
        }
        void operator++(int) { ++*this; }
        friend bool operator==(const iterator& a, const iterator& b) noexcept {
            return a.m_range == b.m_range;
        }
        friend bool operator!=(const iterator& a, const iterator& b) noexcept {
            return a.m_range != b.m_range;
        }

    private:
        Blocks* m_range = nullptr;  // null: at the end
    };

    /** Of a reader, which must outlive it; `frames` in a block, at least 1. */
    Blocks(Reader& reader, std::size_t frames) noexcept : m_reader(&reader), m_frames(frames) {}

    /** Reads the first block. */
    iterator begin() { return iterator(this); }
    iterator end() noexcept { return {}; }
    /** How the audio ended, after the last block; `more` before it and after a failure. */
    Ending ending() const noexcept { return m_ending; }

private:
    bool advance();
    bool fail(Failure failure);
    Result<> prepare();
    typename iterator::value_type current() {
        if constexpr (!Throws)
            if (m_failure && m_come == 0) return *m_failure;
        return Block<T>(m_buffer.data(), m_come, m_channels);
    }

    Reader* m_reader;
    std::size_t m_frames;
    std::uint32_t m_channels = 0;
    std::vector<T> m_buffer;
    std::size_t m_come = 0;            // frames of the current block
    std::optional<Failure> m_failure;  // the current element is one, or the next if m_come isn't 0
    bool m_over = false;               // the current element is the last
    Ending m_ending = Ending::more;
};

/** Reads files, one after another, as int16 or float frames at a rate and channel count of the program's
 * choice. */
class Reader : public detail::Handle<vlw_reader, vlw_reader_free, vlw_reader_error> {
public:
    /** One without a file, through the default module or that one. Code::no_memory. */
    Reader() : Reader(try_make().value()) {}
    explicit Reader(const Module& module) : Reader(try_make(module).value()) {}
    static Result<Reader> try_make() { return detail::make<Reader>(vlw_reader_new, nullptr); }
    static Result<Reader> try_make(const Module& module) {
        return detail::make<Reader>(vlw_reader_new, module.get());
    }
    /** Takes over a handle. */
    explicit Reader(vlw_reader* owned) noexcept : Handle(owned) {}

    /** What is to be read: 0 for the file's own. Channels become one (their mean), two from 5.1, or any
     * number from one; rates are 1000 to 768000. Code::unsupported, here or at the opening; Code::bad_state
     * after the first frame. */
    void output(std::uint32_t rate, std::uint32_t channels) { try_output(rate, channels).value(); }
    Result<> try_output(std::uint32_t rate, std::uint32_t channels) {
        return result(vlw_reader_output(get(), rate, channels));
    }
    /** How text of tags is read in files that are opened afterwards. */
    void text(Text text) { try_text(text).value(); }
    Result<> try_text(Text text) { return result(vlw_reader_text(get(), static_cast<vlw_text>(text))); }

    /** Opens a file; one that is open is closed first. Code::not_found, no_permission, in_use, system,
     * not_audio, damaged, no_decoder, unsupported. */
    void open(const Path& path) { try_open(path).value(); }
    Result<> try_open(const Path& path) { return result(vlw_reader_open(get(), path.c_str())); }
    /** From where a descriptor stands, which is duplicated. */
    void open_fd(int fd) { try_open_fd(fd).value(); }
    Result<> try_open_fd(int fd) { return result(vlw_reader_open_fd(get(), fd)); }
    /** From memory, which isn't copied: it must stay as it is until the file is closed. */
    void open_memory(const void* bytes, std::size_t size) { try_open_memory(bytes, size).value(); }
    Result<> try_open_memory(const void* bytes, std::size_t size) {
        return result(vlw_reader_open_memory(get(), bytes, size));
    }
#if __cplusplus >= 202002L
    void open_memory(std::span<const std::byte> bytes) { open_memory(bytes.data(), bytes.size()); }
    Result<> try_open_memory(std::span<const std::byte> bytes) {
        return try_open_memory(bytes.data(), bytes.size());
    }
#endif
    /** From where a stream of the program's own stands; needs its `read`. It is kept until the file is
     * closed. */
    void open(Stream stream) { try_open(std::move(stream)).value(); }
    Result<> try_open(Stream stream) {
        if (!get() || !stream.read) return detail::failure(VLW_BAD_ARGUMENT);
        auto kept = std::make_unique<Stream>(std::move(stream));
        const vlw_stream calls = detail::StreamCalls::of(kept.release());  // from here on `close` deletes it
        return result(vlw_reader_open_stream(get(), &calls));
    }
    /** Closes the file, if there is one. */
    void close() noexcept { vlw_reader_close(get()); }

    /** What the file is: its own rate, channels, width. Code::bad_state without a file. */
    Format format() const { return try_format().value(); }
    Result<Format> try_format() const { return detail::format(vlw_reader_format, get()); }
    /** A copy of the file's tags and pictures. Code::bad_state without a file. */
    Tags tags() { return try_tags().value(); }
    Result<Tags> try_tags() {
        Result<Tags> tags = Tags::try_make();
        if (!tags) return tags;
        if (Result<> read = result(vlw_reader_tags(get(), tags->get())); !read) return read.error();
        return tags;
    }

    /** What is being read: frames a second, and samples in a frame; 0 without a file. */
    std::uint32_t rate() const noexcept { return vlw_reader_rate(get()); }
    std::uint32_t channels() const noexcept { return vlw_reader_channels(get()); }
    /** The frames that reading from the start brings, at rate(); none where only reading tells. */
    std::optional<std::int64_t> frames() const noexcept { return detail::length(vlw_reader_frames(get())); }
    /** The place of the next frame. */
    std::int64_t tell() const noexcept { return vlw_reader_tell(get()); }
    /** Whether the source can be moved in. */
    bool seekable() const noexcept { return vlw_reader_seekable(get()) != 0; }

    /** Moves to a frame, counted from the start at rate(). Beyond the end it moves there and returns
     * Ending::end. For a negative place Code::bad_argument, Code::not_seekable; the place then stays. */
    Ending seek(std::int64_t frame) { return try_seek(frame).value(); }
    Result<Ending> try_seek(std::int64_t frame) { return ending(vlw_reader_seek(get(), frame)); }

    /** Reads frames into a buffer of at least `frames` times channels() samples; float ones are in [-1, 1). A
     * failure tells in its `frames` how many good ones came first; reading on tries again. */
    Read read(std::int16_t* buffer, std::size_t frames) { return try_read(buffer, frames).value(); }
    Read read(float* buffer, std::size_t frames) { return try_read(buffer, frames).value(); }
    Result<Read> try_read(std::int16_t* buffer, std::size_t frames) {
        return read_by(vlw_reader_read_int16, buffer, frames);
    }
    Result<Read> try_read(float* buffer, std::size_t frames) {
        return read_by(vlw_reader_read_float, buffer, frames);
    }
#if __cplusplus >= 202002L
    /** As many whole frames as the span has room for. */
    Read read(std::span<std::int16_t> buffer) { return try_read(buffer).value(); }
    Read read(std::span<float> buffer) { return try_read(buffer).value(); }
    Result<Read> try_read(std::span<std::int16_t> buffer) {
        return try_read(buffer.data(), room_of(buffer.size()));
    }
    Result<Read> try_read(std::span<float> buffer) { return try_read(buffer.data(), room_of(buffer.size())); }
#endif

    /** The rest of the audio, `frames` frames at a time: `for (auto block : reader.blocks(4096))`, or
     * blocks<float>. The range throws while it is walked, and in the other form its elements are
     * Result<Block<T>>. */
    template <class T = std::int16_t>
    Blocks<T, true> blocks(std::size_t frames) noexcept {
        return {*this, frames};
    }
    template <class T = std::int16_t>
    Blocks<T, false> try_blocks(std::size_t frames) noexcept {
        return {*this, frames};
    }

private:
    template <class T>
    Result<Read> read_by(vlw_code (*function)(vlw_reader*, T*, std::size_t, std::size_t*), T* buffer,
                         std::size_t frames) {
        std::size_t done = 0;
        const vlw_code code = function(get(), buffer, frames, &done);
        if (code < 0) return detail::failure(code, last_error(), done);
        return Read{done, *detail::ending(code)};
    }
    std::size_t room_of(std::size_t samples) const noexcept {
        const std::uint32_t count = channels();
        return count == 0 ? 0 : samples / count;  // without a file the read itself tells so
    }
};

template <class T, bool Throws>
Result<> Blocks<T, Throws>::prepare() {
    static_assert(std::is_same_v<T, std::int16_t> || std::is_same_v<T, float>,
                  "blocks are of int16_t or float");
    m_channels = m_reader->channels();
    const std::size_t width = m_channels == 0 ? 1 : m_channels;  // without a file the read tells so
    if (m_frames == 0) return detail::failure(VLW_BAD_ARGUMENT);
    if (m_frames > std::numeric_limits<std::ptrdiff_t>::max() / sizeof(T) / width)
        return detail::failure(VLW_NO_MEMORY);
    m_buffer.resize(m_frames * width);
    return {};
}

/** Whether there is a next element. */
template <class T, bool Throws>
bool Blocks<T, Throws>::advance() {
    m_come = 0;
    if (m_over) return false;
    if (m_failure) return fail(*std::exchange(m_failure, std::nullopt));  // its good frames were shown before
    if (m_buffer.empty())
        if (Result<> ready = prepare(); !ready) return fail(ready.error());
    const Result<Read> read = m_reader->try_read(m_buffer.data(), m_frames);
    if (!read && read.error().frames == 0) return fail(read.error());
    if (!read) {
        m_come = read.error().frames;
        m_failure = read.error();
        return true;
    }
    m_come = read->frames;
    m_ending = read->ending;
    m_over = m_ending != Ending::more;
    return m_come != 0;
}

/** Makes the failure the last element, or throws it. */
template <class T, bool Throws>
bool Blocks<T, Throws>::fail(Failure failure) {
    m_over = true;
    if constexpr (Throws) throw Error(std::move(failure));
    m_failure = std::move(failure);
    return true;
}

// ---- writing ----------------------------------------------------------------------------------------------

/** A block of memory that the library gave, as a range of bytes. */
class Bytes {
public:
    /** None. */
    Bytes() = default;
    /** Takes over a block that goes to vlw_free. */
    Bytes(void* owned, std::size_t size) noexcept : m_bytes(owned), m_size(size) {}
    Bytes(Bytes&& other) noexcept
        : m_bytes(std::move(other.m_bytes)), m_size(std::exchange(other.m_size, 0)) {}
    Bytes& operator=(Bytes&& other) noexcept {
        m_bytes = std::move(other.m_bytes);
        m_size = std::exchange(other.m_size, 0);
        return *this;
    }
    ~Bytes() = default;

    /** The bytes, lent as long as this object has them. */
    const std::byte* data() const noexcept { return static_cast<const std::byte*>(m_bytes.get()); }
    /** How many there are. */
    std::size_t size() const noexcept { return m_size; }
    /** As a range; what std::span is made of. */
    const std::byte* begin() const noexcept { return data(); }
    const std::byte* end() const noexcept { return data() + m_size; }

private:
    std::unique_ptr<void, detail::Freer<vlw_free>> m_bytes;
    std::size_t m_size = 0;
};

/** Writes WAV files, one after another. A file comes into being whole, in finish(): until then, and if
 * anything fails, there is no file, or the old one. */
class Writer : public detail::Handle<vlw_writer, vlw_writer_free, vlw_writer_error> {
public:
    /** One without a file, through the default module or that one. Code::no_memory. */
    Writer() : Writer(try_make().value()) {}
    explicit Writer(const Module& module) : Writer(try_make(module).value()) {}
    static Result<Writer> try_make() { return detail::make<Writer>(vlw_writer_new, nullptr); }
    static Result<Writer> try_make(const Module& module) {
        return detail::make<Writer>(vlw_writer_new, module.get());
    }
    /** Takes over a handle. */
    explicit Writer(vlw_writer* owned) noexcept : Handle(owned) {}

    /** What will be given; needed before a file is created. */
    void input(std::uint32_t rate, std::uint32_t channels) { try_input(rate, channels).value(); }
    Result<> try_input(std::uint32_t rate, std::uint32_t channels) {
        return result(vlw_writer_input(get(), rate, channels));
    }
    /** What files are to have: 0 for the input's rate and channels, and for 16 bits. Code::unsupported at the
     * creation. */
    void output(std::uint32_t rate, std::uint32_t channels, std::uint32_t bits = 0) {
        try_output(rate, channels, bits).value();
    }
    Result<> try_output(std::uint32_t rate, std::uint32_t channels, std::uint32_t bits = 0) {
        return result(vlw_writer_output(get(), rate, channels, bits));
    }
    /** How text of tags is written. */
    void text(Text text) { try_text(text).value(); }
    Result<> try_text(Text text) { return result(vlw_writer_text(get(), static_cast<vlw_text>(text))); }
    /** The tags and pictures of this file and those after it; copied. Until finish(). */
    void tags(const AnyTags& tags) { try_tags(tags).value(); }
    Result<> try_tags(const AnyTags& tags) {
        // Null would take the tags back.
        return tags.get() ? result(vlw_writer_tags(get(), tags.get())) : detail::failure(VLW_BAD_ARGUMENT);
    }
    /** Takes back what tags() set. */
    void clear_tags() { try_clear_tags().value(); }
    Result<> try_clear_tags() { return result(vlw_writer_tags(get(), nullptr)); }

    /** Begins a file; an unfinished one is dropped. Code::exists without Flags::overwrite; Flags::lossy is
     * the other. */
    void create(const Path& path, Flags flags = Flags::none) { try_create(path, flags).value(); }
    Result<> try_create(const Path& path, Flags flags = Flags::none) {
        return result(vlw_writer_create(get(), path.c_str(), number(flags)));
    }
    /** Into a descriptor, duplicated, from where it stands. All bytes come, in order, in finish(). */
    void create_fd(int fd, Flags flags = Flags::none) { try_create_fd(fd, flags).value(); }
    Result<> try_create_fd(int fd, Flags flags = Flags::none) {
        return result(vlw_writer_create_fd(get(), fd, number(flags)));
    }
    /** Into a stream of the program's own, which needs `write` alone. All bytes come, in order, in finish().
     */
    void create(Stream stream, Flags flags = Flags::none) { try_create(std::move(stream), flags).value(); }
    Result<> try_create(Stream stream, Flags flags = Flags::none) {
        if (!get() || !stream.write) return detail::failure(VLW_BAD_ARGUMENT);
        auto kept = std::make_unique<Stream>(std::move(stream));
        const vlw_stream calls = detail::StreamCalls::of(kept.release());  // from here on `close` deletes it
        return result(vlw_writer_create_stream(get(), &calls, number(flags)));
    }
    /** Into memory, from which take() has it. */
    void create_memory(Flags flags = Flags::none) { try_create_memory(flags).value(); }
    Result<> try_create_memory(Flags flags = Flags::none) {
        return result(vlw_writer_create_memory(get(), number(flags)));
    }

    /** Takes all frames or fails; after a failure the file can only be dropped. Code::no_space, too_large,
     * system. */
    void write(const std::int16_t* buffer, std::size_t frames) { try_write(buffer, frames).value(); }
    void write(const float* buffer, std::size_t frames) { try_write(buffer, frames).value(); }
    Result<> try_write(const std::int16_t* buffer, std::size_t frames) {
        return result(vlw_writer_write_int16(get(), buffer, frames));
    }
    Result<> try_write(const float* buffer, std::size_t frames) {
        return result(vlw_writer_write_float(get(), buffer, frames));
    }
    /** A block that a reader brought, with the channels that input() said. */
    template <class T>
    void write(const Block<T>& block) {
        write(block.data(), block.frames());
    }
    template <class T>
    Result<> try_write(const Block<T>& block) {
        return try_write(block.data(), block.frames());
    }

    /** Frames taken. */
    std::int64_t tell() const noexcept { return vlw_writer_tell(get()); }
    /** Completes the file, brings it to the disk and gives it its name. Code::would_lose leaves the file
     * open: set other tags. */
    void finish() { try_finish().value(); }
    Result<> try_finish() { return result(vlw_writer_finish(get())); }
    /** Drops an unfinished file. */
    void drop() noexcept { vlw_writer_drop(get()); }
    /** The finished file of create_memory(), once. Code::bad_state without one. */
    Bytes take() { return try_take().value(); }
    Result<Bytes> try_take() {
        void* bytes = nullptr;
        std::size_t size = 0;
        if (Result<> taken = result(vlw_writer_take(get(), &bytes, &size)); !taken) return taken.error();
        return Bytes(bytes, size);
    }

private:
    static std::uint32_t number(Flags flags) noexcept { return static_cast<std::uint32_t>(flags); }
};

// ---- editing in place -------------------------------------------------------------------------------------

/** Changes the tags of a WAV file of any format and no other byte of it. An interrupted save leaves the old
 * tags or the new ones. */
class Editor : public detail::Handle<vlw_editor, vlw_editor_free, vlw_editor_error> {
public:
    /** One without a file, through the default module or that one. Code::no_memory. */
    Editor() : Editor(try_make().value()) {}
    explicit Editor(const Module& module) : Editor(try_make(module).value()) {}
    static Result<Editor> try_make() { return detail::make<Editor>(vlw_editor_new, nullptr); }
    static Result<Editor> try_make(const Module& module) {
        return detail::make<Editor>(vlw_editor_new, module.get());
    }
    /** Takes over a handle. */
    explicit Editor(vlw_editor* owned) noexcept : Handle(owned) {}

    /** How text of tags is read and written in files that are opened afterwards. */
    void text(Text text) { try_text(text).value(); }
    Result<> try_text(Text text) { return result(vlw_editor_text(get(), static_cast<vlw_text>(text))); }
    /** Opens a file and keeps others from writing to it until it is closed or saved. Fails as Reader::open.
     */
    void open(const Path& path) { try_open(path).value(); }
    Result<> try_open(const Path& path) { return result(vlw_editor_open(get(), path.c_str())); }
    /** What the file is. Code::bad_state without a file. */
    Format format() const { return try_format().value(); }
    Result<Format> try_format() const { return detail::format(vlw_editor_format, get()); }
    /** The file's tags, to be changed in place; lent until the editor closes, saves or opens. Code::bad_state
     * without a file. */
    TagsRef tags() { return try_tags().value(); }
    Result<TagsRef> try_tags() {
        vlw_tags* const tags = vlw_editor_tags(get());
        if (!tags) return detail::failure(VLW_BAD_STATE);
        return TagsRef(tags);
    }
    /** Saves and closes; where nothing was changed, nothing is written. Code::would_lose where any tag would
     * come back in another form: the file stays open and as it was. Flags::lossy saves all the same. */
    void save(Flags flags = Flags::none) { try_save(flags).value(); }
    Result<> try_save(Flags flags = Flags::none) {
        return result(vlw_editor_save(get(), static_cast<std::uint32_t>(flags)));
    }
    /** Closes the file, if there is one, without saving. */
    void close() noexcept { vlw_editor_close(get()); }
};

// ---- converting a file ------------------------------------------------------------------------------------

/** How far a conversion is, in frames of the source. */
struct Progress {
    std::int64_t done = 0;              ///< frames
    std::optional<std::int64_t> total;  ///< frames; none where their number can't be told
};

/** What a conversion is to do; as it is: the nearest format, all tags, no overwriting. */
struct Conversion {
    std::uint32_t rate = 0;         ///< frames a second; 0: as near to the source as can be
    std::uint32_t channels = 0;     ///< 0: as near to the source as can be
    std::uint32_t bits = 0;         ///< 0: as near to the source as can be
    Flags flags = Flags::none;      ///< overwrite, lossy, partial, no_tags, no_chunks
    std::uint32_t threads = 0;      ///< 0: as many as there are cores; the file doesn't depend on it
    Text text = Text::automatic;    ///< how text of tags is read and written
    const AnyTags* tags = nullptr;  ///< set on top of the source's; read until the call returns; may be null
    /** Called on the thread that called, ten times a second and at the end. Returns whether to go on: else
     * the conversion fails with Code::cancelled. What it throws ends the conversion too, and comes out of the
     * call, in either form. */
    std::function<bool(const Progress&)> progress = nullptr;
};

/** What a conversion made. */
struct Converted {
    Format format;      ///< of the new file
    std::string notes;  ///< a line for each thing that was given up ("24 → 16 bits"); empty for none
    Ending ending = Ending::end;  ///< `cut`: of a source that ended early, by Flags::partial
};

/** Makes WAV files of any files that can be read. */
class Converter : public detail::Handle<vlw_converter, vlw_converter_free, vlw_converter_error> {
public:
    /** One through the default module or that one. Code::no_memory. */
    Converter() : Converter(try_make().value()) {}
    explicit Converter(const Module& module) : Converter(try_make(module).value()) {}
    static Result<Converter> try_make() { return detail::make<Converter>(vlw_converter_new, nullptr); }
    static Result<Converter> try_make(const Module& module) {
        return detail::make<Converter>(vlw_converter_new, module.get());
    }
    /** Takes over a handle. */
    explicit Converter(vlw_converter* owned) noexcept : Handle(owned) {}

    /** Makes a file of another. The target appears whole or not at all. A source that ends early is
     * Code::damaged, and nothing is made, without Flags::partial. */
    Converted run(const Path& source, const Path& target, const Conversion& conversion = {}) {
        return try_run(source, target, conversion).value();
    }
    Result<Converted> try_run(const Path& source, const Path& target, const Conversion& conversion = {}) {
        return try_run_by(
            [&](vlw_converter* converter, const vlw_conversion* record) {
                return vlw_converter_run(converter, source.c_str(), target.c_str(), record);
            },
            conversion);
    }
    /** The same by another function of the library, which `run(handle, record)` calls. */
    template <class Run>
    Result<Converted> try_run_by(const Run& run_it, const Conversion& conversion) {
        Watch watch{&conversion.progress, nullptr};
        const vlw_conversion record = to_record(conversion, watch);
        const Result<Ending> run = ending(run_it(get(), &record));
        if (watch.thrown) std::rethrow_exception(watch.thrown);
        if (!run) return run.error();
        Result<Format> format = detail::format(vlw_converter_format, get());
        if (!format) return format.error();
        return Converted{*format, std::string(detail::view(vlw_converter_notes(get()))),
                         *run == Ending::cut ? Ending::cut : Ending::end};
    }

private:
    /** The program's function, and what it threw. */
    struct Watch {
        const std::function<bool(const Progress&)>* progress;
        std::exception_ptr thrown;
    };

    static vlw_conversion to_record(const Conversion& conversion, Watch& watch) noexcept {
        auto record = detail::sized<vlw_conversion>();
        record.rate = conversion.rate;
        record.channels = conversion.channels;
        record.bits = conversion.bits;
        record.flags = static_cast<std::uint32_t>(conversion.flags);
        record.threads = conversion.threads;
        record.text = static_cast<vlw_text>(conversion.text);
        record.tags = conversion.tags ? conversion.tags->get() : nullptr;
        if (conversion.progress) record.progress = tell;
        record.user = &watch;
        return record;
    }
    static int tell(void* user, std::int64_t done, std::int64_t total) noexcept {
        Watch& watch = *static_cast<Watch*>(user);
        try {
            return (*watch.progress)({done, detail::length(total)}) ? 0 : 1;
        } catch (...) {
            watch.thrown = std::current_exception();
            return 1;
        }
    }
};

}  // namespace vlw

#endif  // VLWAV_HPP
