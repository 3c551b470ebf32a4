#!/bin/sh
# demo.sh BUILD_DIR [view]: photographs a virtual courtyard with a virtual camera, stitches the two pictures with and without seam
# search and with the exact engine, and leaves everything in out/demo/.  view: also a page to look around in.
set -eu
biseam=$1/tools/biseam/biseam
out=out/demo

# As wide as twice the pictures' height, so that they fit the exact engine as they are.
echo "Rendering the courtyard (some seconds) ..."
"$biseam" scene -o "$out" --fisheye-size 1080 --width 2160 --baseline 0.03 --exposure-difference 0.05 > /dev/null

echo "Stitching ..."
pair="$out/side_by_side.png --camera $out/camera.toml"
"$biseam" stitch $pair -o "$out/panorama.png" --show-seams "$out/seams.png"
"$biseam" stitch $pair -o "$out/plain.png" --no-search
"$biseam" stitch $pair -o "$out/exact.png" --engine exact
page="biseam view     makes a page of it to look around in, once make build has brought its viewer"
if [ "${2:-}" = view ]; then
  page="$out/panorama.html      both to look around in: open it in a browser"
  "$biseam" view "$out/panorama.png" --show-seams "$out/seams.png" -o "$out/panorama.html"
fi

"$biseam" contact-sheet -o "$out/contact_sheet.png" \
  "$out/truth.png" "$out/panorama.png" "$out/seams.png" "$out/exact.png" \
  --caption "Truth" \
  --caption "Panorama" \
  --caption "Where the lenses are joined, and the seam" \
  --caption "Exact engine"

"$biseam" contact-sheet -o "$out/seam_detail.png" --crop 1451,371,370,472 --columns 4 --panel-width 740 \
  "$out/truth.png" "$out/panorama.png" "$out/plain.png" "$out/exact.png" \
  --caption "Truth" --caption "Panorama" --caption "Seam search off" --caption "Exact engine"

echo
echo "The truth is seen from the middle between the lenses, so no stitch can reach it.  A straight cut shows near things"
echo "broken; the search leads the seam around them: look at seam_detail.png.  The exact engine's picture lies half a pixel"
echo "aside and shows what hosts of the C interface get."
echo
echo "$out/side_by_side.png   the two fisheye pictures"
echo "$out/panorama.png       the panorama"
echo "$out/seams.png          the same with the zone where the lenses are joined, and the seam"
echo "$page"
echo "$out/plain.png          stitched without seam search"
echo "$out/exact.png          stitched by the exact engine"
echo "$out/truth.png          what a perfect stitch would be"
echo "$out/contact_sheet.png  four of them on one page"
echo "$out/seam_detail.png    one side of the seam, enlarged"
