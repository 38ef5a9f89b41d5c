// SPDX-License-Identifier: GPL-3.0-or-later
// Dorvane — the company information editor (Dialog2): its fields and its OK rule.
#pragma once

#include <array>
#include <string>

#include "ui/uiport.h"
#include "xml/xml.h"

namespace dorvane::company {

// One text box of the dialog: its control name, the label beside it ("" for a box that
// shares the label before it), whether it must be filled, and the record fields it feeds.
struct EditorField {
    const char* control;
    const char* label;
    bool required;
    const char* field;       // read from and written to
    const char* legalField;  // written too, or nullptr
};

inline constexpr std::array<EditorField, 11> kEditorFields = {{
    {"CompanyName", "Company Name", true, "CompanyName", "LegalCompanyName"},
    {"Addr1", "Address", true, "Address/Addr1", "LegalAddress/Addr1"},
    {"Addr2", "", false, "Address/Addr2", "LegalAddress/Addr2"},
    {"City", "City / State / Zip", true, "Address/City", "LegalAddress/City"},
    {"State", "", true, "Address/State", "LegalAddress/State"},
    {"Zip", "", true, "Address/PostalCode", "LegalAddress/PostalCode"},
    {"Country", "Country", true, "Address/Country", "LegalAddress/Country"},
    {"Phone", "Phone", true, "Phone", nullptr},
    {"Fax", "Fax", false, "Fax", nullptr},
    {"Email", "Email", true, "Email", nullptr},
    {"Website", "Website", false, "CompanyWebSite", nullptr},
}};

inline constexpr const char* kAllFieldsRequired = "All fields are required !";

// The text box with this control name (any case), or null.
const EditorField* editorField(std::string_view control);

// The dialog's state. The front end shows `values` in the text boxes (same order as
// kEditorFields), lets the user change them and calls accept() on OK: when it answers false
// the dialog stays open.
class CompanyEditorModel final : public ui::DialogModel {
public:
    // `record` is the CompanyRet being edited; `companyFile` the open QuickBooks file.
    CompanyEditorModel(ui::UiPort& ui, xml::Node record, std::string companyFile);

    std::string_view dialogName() const override { return "Dialog2"; }

    std::array<std::string, kEditorFields.size()> values;

    // Types `value` into the text box named `control` (any case); false when there is none.
    bool setValue(std::string_view control, std::string value);

    // Checks the required fields (showing "All fields are required !" when one is empty) and
    // writes FileName and every field into the record.
    bool accept();
    // The record the dialog edits.
    xml::Node record() const { return m_record; }

private:
    ui::UiPort& m_ui;
    xml::Node m_record;
    std::string m_companyFile;
};

// Writes `value` at a simple path of child names below `node` ("Address/City"), creating the
// missing elements on the way.
void setPathText(xml::Node node, std::string_view path, std::string_view value);

}  // namespace dorvane::company
