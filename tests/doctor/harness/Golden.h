#ifndef DOCTOR_HARNESS_GOLDEN_H
#define DOCTOR_HARNESS_GOLDEN_H

#include "doctor/Report.h"

#include <string>

/// The table for a report, with what changes from run to run and from machine to machine replaced: ports, addresses,
/// dates, serial numbers, fingerprints, host keys and libcurl's version.
std::string normalisedTable(const doctor::Report& report);

/// Compares with the file golden/NAME.txt; with SFTPCLIENT_WRITE_GOLDEN in the environment, writes it instead.
void expectGolden(const std::string& name, const std::string& text);

#endif
