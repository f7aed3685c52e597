#include "host/chromium_element.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "chromium/json.h"
#include "host/markup_scanner.h"

namespace host {
namespace {

using chromium::Json;
using chromium::QuoteJson;
using platform::FromUtf8;
using platform::ToUtf8;
using platform::WideString;

// The copy lies in a document of its own, where no script and no image runs or loads for it.
constexpr char kMarkup[] = R"js((element => {
    const copy = document.implementation.createHTMLDocument('').importNode(element, true);
    const kinds = 'input,textarea,option,style,noscript';
    const copies = copy.querySelectorAll(kinds);
    element.querySelectorAll(kinds).forEach((from, i) => {
        const to = copies[i];
        if (from.localName === 'input') {
            if (from.type === 'checkbox' || from.type === 'radio') {
                to.toggleAttribute('checked', from.checked);
            } else if (from.type !== 'password' && from.type !== 'file' &&
                       from.value !== from.defaultValue) {
                to.setAttribute('value', from.value);
            }
        } else if (from.localName === 'textarea') {
            if (from.value !== from.defaultValue) to.textContent = '\n' + from.value;
        } else if (from.localName === 'option') {
            to.toggleAttribute('selected', from.selected);
        } else if (from.localName === 'style') {
            const rules = from.sheet && !from.textContent.trim() ? [...from.sheet.cssRules] : [];
            if (rules.length) to.textContent = rules.map(rule => rule.cssText).join('\n');
        } else {
            to.innerHTML = from.textContent;
        }
    });
    return copy.outerHTML;
}))js";

// The value of an attribute as a browser gives it, and whether it is written so.
constexpr char kReadAttribute[] = R"js(((element, name) => {
    const written = element.getAttribute(name);
    if (written === null || (name !== 'src' && name !== 'href')) return [written, true];
    let resolved = written;
    if (typeof element[name] === 'string') {
        resolved = element[name];
    } else {
        try { resolved = new URL(written, document.baseURI).href; } catch {}
    }
    return [resolved, resolved === written];
}))js";

ChromiumElementList::Value ValueOf(const Json& pair) {
    ChromiumElementList::Value value;
    if (pair.At(0).IsText()) value.resolved = FromUtf8(pair.At(0).Text());
    value.isAsWritten = pair.At(1).Flag();
    return value;
}

std::string NameOf(const WideString& name) { return ToUtf8(LowerOf(name)); }

}  // namespace

ChromiumElement::ChromiumElement(std::shared_ptr<ChromiumDocument> document, std::string expression)
    : document_(std::move(document)), expression_(std::move(expression)) {}

bool ChromiumElement::ScrollHeight(LONG& height) {
    Json answer;
    if (!document_->Ask(expression_ + ".scrollHeight", answer)) return false;
    // An element of another vocabulary, such as a picture shown alone, may have none.
    height = static_cast<LONG>(
        std::clamp(answer.Number(0), 0.0, double{std::numeric_limits<LONG>::max()}));
    return true;
}

bool ChromiumElement::Parent(std::shared_ptr<PageElement>& parent) {
    return document_->FindElement(expression_ + ".parentElement", parent);
}

bool ChromiumElement::Markup(WideString& markup) {
    Json answer;
    if (!document_->Ask(kMarkup + ("(" + expression_ + ")"), answer)) return false;
    markup = FromUtf8(answer.Text());
    return true;
}

bool ChromiumElement::Attribute(const WideString& name, std::optional<WideString>& value) {
    Json answer;
    const std::string arguments = "(" + expression_ + "," + QuoteJson(NameOf(name)) + ")";
    if (!document_->Ask(kReadAttribute + arguments, answer)) return false;
    value = ValueOf(answer).resolved;
    return true;
}

bool ChromiumElement::SetAttribute(const WideString& name, const WideString& value) {
    return document_->Change(expression_ + ".setAttribute(" + QuoteJson(NameOf(name)) + "," +
                             QuoteJson(ToUtf8(value)) + ")");
}

std::string ChromiumElementList::MakeScript(const std::string& tag) {
    return "(tag => { const list = [...document.getElementsByTagName(tag)];"
           " const lists = globalThis.quvadaLists || (globalThis.quvadaLists = []);"
           " return [lists.push(list) - 1, list.length]; })(" +
           QuoteJson(tag) + ")";
}

ChromiumElementList::ChromiumElementList(std::shared_ptr<ChromiumDocument> document,
                                         std::size_t number)
    : document_(std::move(document)), number_(number) {}

std::string ChromiumElementList::Expression(std::size_t index) const {
    return "quvadaLists[" + std::to_string(number_) + "][" + std::to_string(index) + "]";
}

const ChromiumElementList::Value* ChromiumElementList::Find(std::size_t index,
                                                            const std::string& name) {
    auto known = values_.find(name);
    if (known == values_.end()) {
        Json answer;
        const std::string list = "quvadaLists[" + std::to_string(number_) + "]";
        if (!document_->Ask(
                list + ".map(element => " + kReadAttribute + "(element," + QuoteJson(name) + "))",
                answer)) {
            return nullptr;
        }
        std::vector<Value> values;
        for (std::size_t i = 0; i < answer.Size(); ++i) values.push_back(ValueOf(answer.At(i)));
        known = values_.emplace(name, std::move(values)).first;
    }
    return index < known->second.size() ? &known->second[index] : nullptr;
}

ChromiumListElement::ChromiumListElement(std::shared_ptr<ChromiumElementList> list,
                                         std::size_t index)
    : ChromiumElement(list->GetDocument(), list->Expression(index)),
      list_(std::move(list)),
      index_(index) {}

bool ChromiumListElement::Attribute(const WideString& name, std::optional<WideString>& value) {
    const ChromiumElementList::Value* const known = list_->Find(index_, NameOf(name));
    if (known) value = known->resolved;
    return known;
}

bool ChromiumListElement::SetAttribute(const WideString& name, const WideString& value) {
    const ChromiumElementList::Value* const known = list_->Find(index_, NameOf(name));
    const bool isSame = known && known->resolved == value;
    if (isSame && known->isAsWritten) return true;  // An image would be loaded once more.
    if (!ChromiumElement::SetAttribute(name, value)) return false;
    if (!isSame) list_->Forget(NameOf(name));
    return true;
}

}  // namespace host
