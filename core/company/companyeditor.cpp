// SPDX-License-Identifier: GPL-3.0-or-later
#include "company/companyeditor.h"

#include "common/text.h"

namespace dorvane::company {

void setPathText(xml::Node node, std::string_view path, std::string_view value) {
    xml::Node at = node;
    for (const std::string& step : text::split(path, '/')) {
        xml::Node child = at.firstChildElement(step);
        at = child ? child : at.appendElement(step);
    }
    at.setText(value);
}

const EditorField* editorField(std::string_view control) {
    for (const EditorField& f : kEditorFields) {
        if (text::equalsIgnoreCase(control, f.control)) {
            return &f;
        }
    }
    return nullptr;
}

bool CompanyEditorModel::setValue(std::string_view control, std::string value) {
    const EditorField* f = editorField(control);
    if (!f) {
        return false;
    }
    values[static_cast<std::size_t>(f - kEditorFields.data())] = std::move(value);
    return true;
}

CompanyEditorModel::CompanyEditorModel(ui::UiPort& ui, xml::Node record, std::string companyFile)
    : m_ui(ui), m_record(record), m_companyFile(std::move(companyFile)) {
    for (std::size_t i = 0; i < kEditorFields.size(); ++i) {
        values[i] = m_record.valueOf(kEditorFields[i].field);
    }
}

bool CompanyEditorModel::accept() {
    for (std::size_t i = 0; i < kEditorFields.size(); ++i) {
        if (kEditorFields[i].required && values[i].empty()) {
            m_ui.messageBox(kAllFieldsRequired);
            return false;
        }
    }
    setPathText(m_record, "FileName", m_companyFile);
    for (std::size_t i = 0; i < kEditorFields.size(); ++i) {
        setPathText(m_record, kEditorFields[i].field, values[i]);
        if (kEditorFields[i].legalField) {
            setPathText(m_record, kEditorFields[i].legalField, values[i]);
        }
    }
    return true;
}

}  // namespace dorvane::company
