// Frame linking: style flags that keep attributes of frames in the same link group equal (the
// frame size and position, axis ranges, 3D views, ...). A link flag names the attribute by its
// style row (LINKFRAMESIZEANDPOSITION, LINKXAXISRANGE, ...); the attributes of parts of the
// plot built elsewhere (contour levels, blanking, slices, iso-surfaces) are copied by functions
// those parts register.
#pragma once

#include <string>

struct Frame_s;

// Copies the linked attribute from one frame to another; true if the target changed.
using LinkCopier_pf = bool (*)(const Frame_s *from, Frame_s *to);
void RegisterLinkCopier(int linkRow, LinkCopier_pf copier);

bool IsLinkFlagRow(int row);
// The flag is on in the frame and the frame is in the group.
bool LinkFlagIsOn(int linkRow, int group, const Frame_s *frame);
int NumFramesLinked(int linkRow, int group);
// 3D view, polar view or X/Y range links that are on.
bool FrameHasLinkedView(const Frame_s *frame);
// Whether the frame's plot type lets the flag be switched on; the refusal in *reason.
bool FrameOkToSetLink(const Frame_s *frame, int linkRow, std::string *reason);
// The current frame has just been linked: it takes the attribute from a frame already on the link.
void AddLinkToCurFrame(int linkRow);
// The attribute of the source goes to every other frame of its group with the flag on.
void PropagateAttributesToLinkedFrames(Frame_s *source, int linkRow);
// After a view change of the current frame: its linked ranges and views go to the others.
void PropagateView(Frame_s *source);

enum LinkType_e { LinkType_WithinFrame = 0, LinkType_BetweenFrames = 1 };
enum FrameCollection_e { FrameCollection_All = 0, FrameCollection_Picked = 1 };
// Copies the current frame's link flags of one kind to all frames (PICKED: the picked ones,
// none while nothing can be picked).
bool Action_PropagateLinking(LinkType_e linkType, FrameCollection_e collection);
