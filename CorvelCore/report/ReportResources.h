// The files the HTML report is made of (resources/report.html, report.css, report.js), compiled
// into the library so that writing a report reads nothing from disk.
//
//   std::string page(ReportResources::report_html());
#pragma once

#include <string_view>

namespace corvel::ReportResources {

std::string_view report_html();
std::string_view report_css();
std::string_view report_js();

}  // namespace corvel::ReportResources
