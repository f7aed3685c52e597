#include "platform/posix/xml/parse.h"

#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <limits>
#include <memory>
#include <utility>

#include "platform/posix/xml_types.h"

namespace platform::xml {

namespace {

HRESULT CodeOf(const xmlError& error) {
    switch (error.code) {
        case XML_ERR_DOCUMENT_EMPTY:
            return XML_E_MISSINGROOT;
        case XML_ERR_DOCUMENT_START:
        case XML_ERR_DOCUMENT_END:
            return XML_E_INVALIDATROOTLEVEL;
        case XML_ERR_TAG_NAME_MISMATCH:
            return XML_E_ENDTAGMISMATCH;
        case XML_ERR_NO_MEMORY:
            return E_OUTOFMEMORY;
        default:
            return E_FAIL;
    }
}

void Note(xmlParserCtxt& parser, ParseFault fault) {
    auto& first = *static_cast<ParseFault*>(parser._private);
    if (first.code == S_OK) first = std::move(fault);  // The others come of it.
}

// A document type could name files and multiply text, so that there is none at all.
void RefuseType(void* context, const xmlChar*, const xmlChar*, const xmlChar*) {
    auto* const parser = static_cast<xmlParserCtxt*>(context);
    Note(*parser, {XML_E_DTDPROHIBITED, TEXT("A document type is prohibited."),
                   parser->input ? parser->input->line : 0});
    xmlStopParser(parser);
}

void NoteError(void* context, xmlError* error) {
    if (!context || error->level < XML_ERR_ERROR || error->domain == XML_FROM_NAMESPACE) return;
    std::string reason = error->message ? error->message : "";
    while (!reason.empty() && reason.back() == '\n') reason.pop_back();
    Note(*static_cast<xmlParserCtxt*>(context), {CodeOf(*error), FromUtf8(reason), error->line});
}

}  // namespace

xmlDoc* Parse(std::string_view bytes, Encoding encoding, ParseFault& fault) {
    // The library sets itself up for all threads at the first parser.
    static const bool isReady = (xmlInitParser(), true);
    (void)isReady;
    fault = {E_OUTOFMEMORY, {}, 0};
    if (bytes.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) return nullptr;
    const std::unique_ptr<xmlParserCtxt, decltype(&xmlFreeParserCtxt)> parser(xmlNewParserCtxt(),
                                                                              xmlFreeParserCtxt);
    if (!parser) return nullptr;
    ParseFault first;
    parser->_private = &first;
    parser->sax->internalSubset = RefuseType;
    parser->sax->serror = NoteError;
    constexpr int kOptions =
        XML_PARSE_NONET | XML_PARSE_NOWARNING | XML_PARSE_NODICT | XML_PARSE_NOBLANKS;
    const bool isUtf8 = encoding == Encoding::Utf8;
    xmlDoc* const tree = xmlCtxtReadMemory(
        parser.get(), bytes.data(), static_cast<int>(bytes.size()), nullptr,
        isUtf8 ? "UTF-8" : nullptr, kOptions | (isUtf8 ? XML_PARSE_IGNORE_ENC : 0));
    fault = std::move(first);
    if (tree && fault.code == S_OK) return tree;
    if (tree) xmlFreeDoc(tree);
    if (bytes.empty()) fault = {XML_E_MISSINGROOT, TEXT("There is no text."), 0};
    if (fault.code == S_OK) fault = {E_FAIL, TEXT("The text is no document."), 0};
    return nullptr;
}

}  // namespace platform::xml
