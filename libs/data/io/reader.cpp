#include <algorithm>
#include <filesystem>
#include <string>
#include <system_error>

#include <tessel/data/convert.h>
#include <tessel/data/errors.h>
#include <tessel/data/reader.h>

#include "data/files.h"
#include "data/io/file_view.h"
#include "data/io/text_parser.h"

namespace Tessel {
namespace {

constexpr wchar_t kTextColumn[] = L"Text";

/// The text of a document, without a byte-order mark.
WString documentText(std::string_view bytes) {
    WString text = Convert::fromUtf8(bytes);
    if (!text.empty() && text.front() == 0xFEFF) text.erase(0, 1);
    return text;
}

DataFrame corpusOf(const StringVector& documents) {
    DataFrame corpus;
    corpus.append(DataFrameColumn(kTextColumn, documents));
    return corpus;
}

/// The names of the files in a folder that end with `ending`, sorted by code points.
std::vector<std::string> fileNames(const WString& folder, const std::string& ending) {
    std::error_code error;
    std::vector<std::string> names;
    std::filesystem::directory_iterator entry(Files::toPath(folder), error), last;
    for (; !error && entry != last; entry.increment(error)) {
        const std::u8string name = entry->path().filename().u8string();
        std::error_code unreadable;
        if (name.ends_with(std::u8string(ending.begin(), ending.end())) && entry->is_regular_file(unreadable))
            names.emplace_back(name.begin(), name.end());
    }
    if (error) throw FileNotFound(Convert::toUtf8Lossy(folder));
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace

DataFrame Reader::readText(const WString& path, const TextOptions& options) {
    const IO::FileView file(path);
    return parseText(file.bytes(), options);
}

DataFrame Reader::parseText(std::string_view text, const TextOptions& options) {
    return IO::TextParser(text, options).parse();
}

DataFrame Reader::parseText(const WString& text, const TextOptions& options) {
    return parseText(Convert::toUtf8(text), options);
}

DataFrame Reader::readCorpusFolder(const WString& folder, const WString& ending) {
    StringVector documents, names;
    for (const std::string& name : fileNames(folder, Convert::toUtf8(ending))) {
        names.push_back(Convert::fromUtf8(name));
        documents.push_back(documentText(Files::readBytes(folder + L"/" + names.back())));
    }
    DataFrame corpus = corpusOf(documents);
    corpus.setRowNames(names);
    return corpus;
}

DataFrame Reader::readCorpusLines(const WString& path) {
    const WString text = documentText(IO::FileView(path).bytes());
    StringVector documents;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t lineFeed = std::min(text.find(L'\n', begin), text.size());
        std::size_t end = lineFeed;
        if (end > begin && text[end - 1] == L'\r') --end;
        documents.push_back(text.substr(begin, end - begin));
        begin = lineFeed + 1;
    }
    return corpusOf(documents);
}

}  // namespace Tessel
