#ifndef DOCTOR_HARNESS_TRUTH_H
#define DOCTOR_HARNESS_TRUTH_H

#include "doctor/Examination.h"
#include "doctor/Predictions.h"

#include <functional>
#include <string>
#include <vector>

/// What the library's six operations really return for the directory of a question: the codes in the order of the
/// predictions.
///
/// `keep` puts a file of this name and content into that directory without using the library; where
/// there is no directory it does nothing. `scratch` is a local file that may be overwritten.
std::vector<int> truthOf(const doctor::Question& question, const std::string& scratch,
                         const std::function<void(const std::string&, const std::string&)>& keep);

/// The same for a session with the default options, and what the question knows of host keys.
std::vector<int> truthOfSession(const doctor::Question& question, const std::string& scratch,
                                const std::function<void(const std::string&, const std::string&)>& keep);

/// What is predicted for a session, as predictions of their own.
std::vector<doctor::Prediction> ofSession(const std::vector<doctor::Prediction>& predictions);

/// Fails the test for each prediction that is not true. An unknown outlook is never true.
void expectTruth(const std::vector<doctor::Prediction>& predictions, const std::vector<int>& truth);

#endif
