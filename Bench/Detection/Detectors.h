// The detectors that are compared, ours and the field's, each given the hint "Chinese" where it takes one.
#ifndef BENCH_DETECTION_DETECTORS_H
#define BENCH_DETECTION_DETECTORS_H

#include <functional>
#include <string>
#include <vector>

struct Detector {
    std::string name;
    std::function<int(const std::string&)>
        detect;  // the library's codes; -1 for an encoding that is none of them
};

// The library through TQ_CodeDetect; its model must be loaded.
Detector OurDetector();

// uchardet, ICU, enca and the zh-autoconvert library.
std::vector<Detector> OtherDetectors();

// The library's code for an encoding's name as the detectors write it.
int CodeOfName(std::string name);

#endif  // BENCH_DETECTION_DETECTORS_H
