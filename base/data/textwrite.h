// Writing a data set as a text data file, the format the converter reads: records of keywords,
// then values, a fixed number to a line.
#pragma once

#include "base/data/dataio.h"

// The text branch of GoWriteDataSet. Like the binary writer it writes beside the target and renames
// over it only when the file is complete.
bool WriteTextDataSet(DataSet_s *dataSet, const DataFileExtras_s *extras, const char *fileName,
                      const WriteDataSetOptions_s &options);
