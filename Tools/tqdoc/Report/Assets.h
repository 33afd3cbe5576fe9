#pragma once

/// @file Assets.h
/// The fixed parts of the report: the files beside this one. The build embeds them.

#include <string_view>

namespace tqdoc {

extern const std::string_view kReportPage;  ///< report.html, with names such as {{title}}
extern const std::string_view kReportStyle;
extern const std::string_view kReportScript;

}  // namespace tqdoc
