// Solution time as a frame sees it: which strands are active, the frame's time steps, and which
// zone of each strand is the relevant one at the frame's solution time. Until field maps exist,
// every strand of the frame's data set counts as active.
#pragma once

#include <cstdint>

#include "base/kernel/types.h"

struct Frame_s;
struct Set_a;

bool AnyActiveStrands(const Frame_s *frame);
bool CurFrameHasActiveStrands();
bool IsActiveStrand(const Frame_s *frame, int32_t strand);
// A new set of the active strand numbers (the caller frees it); null without a data set.
Set_a *GetActiveStrands(const Frame_s *frame);

// First and last time over the active strands; 0 and 0 with none. False with none.
bool GetSolutionTimeMinMax(const Frame_s *frame, double *min, double *max);
bool GetSolutionTimeMinMaxForAllStrands(const Frame_s *frame, double *min, double *max);
// (maximum - minimum) x 1.0E-6 over the active strands, or over all when none is active.
double GetSolutionTimeTolerance(const Frame_s *frame);

// The zones of a strand that stand for it at the time: those of the last step at or before it
// (within the tolerance), or null when the time lies outside the strand. The caller frees the set.
Set_a *GetStrandRelevantZones(const Frame_s *frame, int32_t strand, double time);
// The zones at exactly the strand's first and last time (new sets; null without the strand).
bool GetStrandZonesAtFirstAndLastTimeSteps(const Frame_s *frame, int32_t strand, Set_a **first, Set_a **last);
// The zone that stands for a strand at the frame's time when its style is edited: the first
// relevant zone, else its first zone before the strand's start or its last after its end.
EntIndex_t GetStrandCandidateZone(const Frame_s *frame, int32_t strand);
// The union over the strands' relevant zones, plus every static zone unless onlyStrandMaps.
bool GetRelevantZones(const Frame_s *frame, bool onlyStrandMaps, double time, Set_a **zones);
// The relevant zones of the active maps at the frame's time; cached in the frame.
const Set_a *GetActiveRelevantZones(Frame_s *frame);
bool StrandIsInContext(const Frame_s *frame, int32_t strand);
bool FrameHasTransientData(const Frame_s *frame);

// Rebuilds the frame's time steps from the active strands and keeps the animation range in step.
void UpdateGlobalTimeScratchFlags(Frame_s *frame);
// The frame's time changed: the relevant zones are worked out again.
void UpdateFrameFlagsOnSolutionTimeChange(Frame_s *frame);
// Sets the frame's solution time (and the derived state that follows it).
void SetFrameSolutionTime(Frame_s *frame, double time);
// Changes one zone's time; false for a zone without a strand (the time is stored all the same).
bool SetZoneSolutionTime(Frame_s *frame, EntIndex_t zone, double time);
int32_t GetNumSolutionTimeTimeSteps(const Frame_s *frame);
// Zero-based step; 0.0 past the steps.
double GetSolutionTimeAtTimeStep(const Frame_s *frame, int32_t step);
// The zero-based step that a time falls in, on the current frame.
int32_t GetTimeStepValueAtSolutionTime(double time);
