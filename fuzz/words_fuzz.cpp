#include <cstdlib>

#include "automation/keyword_table.h"
#include "automation/split_words.h"
#include "fuzz/exact_text.h"

/// Words are parts of the text in their order, and every name of a table is found.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto exact = fuzz::ExactText(data, size);
    const AUX::WStringView text(exact.get());
    AUX::WordSplitter splitter(text);
    const WCHAR* behind = text.data();
    for (AUX::WStringView word; splitter.Next(word);) {
        if (word.empty() || word.data() < behind) std::abort();
        behind = word.data() + word.size();
        if (behind > text.data() + text.size()) std::abort();
    }
    AUX::KeywordTable table(nullptr, true);
    table.Parse(text, -9, 9, 0, {});
    for (const AUX::KeywordEntry* entry : table.entries) {
        if (entry->value == table.defaultValue) std::abort();
        const bool isAsked = !entry->name.IsEmpty();
        if (isAsked && table.Lookup(entry->name.Text()) != entry->value) std::abort();
    }
    return 0;
}
