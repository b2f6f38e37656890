#include "operations/file_operations.h"

#include "config/operation_variables.h"
#include "operations/operation_section.h"
#include "operations/template_line.h"
#include "platform/owners.h"

namespace {

constexpr std::int32_t CreateOpcode = 1;
constexpr std::int32_t DeleteOpcode = 2;
constexpr std::int32_t CopyOpcode = 3;

void LogFailedRequest(const std::wstring& line) {
    WriteLog(L"ExecutSingleFileOper: File oper req %s fail,error code 0x%08X", line.c_str(),
             GetLastError());
}

bool Create(const std::wstring& path, bool isFolder) {
    if (isFolder) {
        return CreateDirectoryW(path.c_str(), nullptr) != FALSE;
    }
    const FileOwner file(CreateFileW(path.c_str(), FILE_ALL_ACCESS, 0, nullptr, CREATE_ALWAYS,
                                     FILE_ATTRIBUTE_NORMAL, nullptr));
    return static_cast<bool>(file);
}

// The fields that an operation uses, opcode included; 0 for an opcode that does nothing.
std::size_t FieldsUsed(std::int32_t opcode) {
    switch (opcode) {
    case CreateOpcode:
    case DeleteOpcode:
        return 3;
    case CopyOpcode:
        return 5;
    default:
        return 0;
    }
}

// False when the operation fails; the last error tells why.
bool CarryOut(const FilledLine& line) {
    const std::int32_t opcode = LeadingNumber(line.Field(0));
    if (FieldsUsed(opcode) == 0) {
        return true;
    }
    if (line.WholeFields < FieldsUsed(opcode)) {
        SetLastError(line.WasCut ? ERROR_FILENAME_EXCED_RANGE : ERROR_INVALID_PARAMETER);
        return false;
    }
    // No separator is put in between: the folder field ends in a backslash. Both fields come out of
    // one filled line, so a path never outgrows its buffer.
    const std::wstring path = line.Field(1) + line.Field(2);
    switch (opcode) {
    case CreateOpcode:
        return Create(path, line.Field(2).empty());
    case DeleteOpcode:
        return DeleteFileW(path.c_str()) != FALSE;
    default:
        return CopyFileW(path.c_str(), (line.Field(3) + line.Field(4)).c_str(), FALSE) != FALSE;
    }
}

} // namespace

bool RunFileOperSection(const std::wstring& section) {
    if (section.empty()) {
        return false;
    }
    // A line that stops the section does not fail the run: file operations are best effort.
    RunOperationLines(section, ExecutSingleFileOper);
    return true;
}

bool ExecutSingleFileOper(const std::wstring& line) {
    if (line.empty()) {
        return true;
    }
    if (MayBeCut(line)) {
        SetLastError(ERROR_FILENAME_EXCED_RANGE);
        LogFailedRequest(line);
        return true;
    }
    // The code of the failures in which Windows is not asked at all.
    SetLastError(ERROR_INVALID_PARAMETER);
    TextList parameters;
    if (!ExpandFileOperVariables(line, parameters)) {
        LogFailedRequest(line);
        return true;
    }
    const FilledLine filled = FillTemplate(line, parameters);
    if (filled.Fields.empty()) {
        LogFailedRequest(filled.Text);
        return false;
    }
    if (!CarryOut(filled)) {
        LogFailedRequest(filled.Text);
    }
    return true;
}
