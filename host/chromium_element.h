#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "host/chromium_document.h"

namespace host {

/// An element of a document in the browser, named by a script's expression, such as
/// "document.body".
class ChromiumElement : public PageElement {
public:
    ChromiumElement(std::shared_ptr<ChromiumDocument> document, std::string expression);

    bool ScrollHeight(LONG& height) override;
    bool Parent(std::shared_ptr<PageElement>& parent) override;
    /// With what the user typed and chose, and with the rules that scripts put into style elements:
    /// the browser's own form has neither. Passwords and the names of files are left out.
    bool Markup(platform::WideString& markup) override;
    bool Attribute(const platform::WideString& name,
                   std::optional<platform::WideString>& value) override;
    bool SetAttribute(const platform::WideString& name, const platform::WideString& value) override;

protected:
    std::shared_ptr<ChromiumDocument> document_;
    std::string expression_;
};

/// A list of elements that the page keeps for us. Reads an attribute of all of them at once.
class ChromiumElementList {
public:
    struct Value {
        std::optional<platform::WideString> resolved;
        bool isAsWritten = false;
    };

    /// The script that makes a list of the elements with a tag name, and gives its number and its
    /// length.
    static std::string MakeScript(const std::string& tag);

    ChromiumElementList(std::shared_ptr<ChromiumDocument> document, std::size_t number);

    [[nodiscard]] const std::shared_ptr<ChromiumDocument>& GetDocument() const { return document_; }
    [[nodiscard]] std::string Expression(std::size_t index) const;
    /// Null: the page does not answer. Valid until the next call. \param name  In small letters.
    const Value* Find(std::size_t index, const std::string& name);
    /// What was read of an attribute no longer holds.
    void Forget(const std::string& name) { values_.erase(name); }

private:
    std::shared_ptr<ChromiumDocument> document_;
    std::size_t number_;
    std::map<std::string, std::vector<Value>> values_;
};

class ChromiumListElement final : public ChromiumElement {
public:
    ChromiumListElement(std::shared_ptr<ChromiumElementList> list, std::size_t index);

    bool Attribute(const platform::WideString& name,
                   std::optional<platform::WideString>& value) override;
    bool SetAttribute(const platform::WideString& name, const platform::WideString& value) override;

private:
    std::shared_ptr<ChromiumElementList> list_;
    std::size_t index_;
};

}  // namespace host
