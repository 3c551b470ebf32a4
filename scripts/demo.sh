#!/bin/sh
# demo.sh BUILD_DIR: photographs a virtual courtyard with a virtual camera, stitches the two pictures with and without seam
# search, and leaves everything in out/demo/.
set -eu
biseam=$1/tools/biseam/biseam
out=out/demo

echo "Rendering the courtyard (some seconds) ..."
"$biseam" scene -o "$out" --baseline 0.03 --exposure-difference 0.05 > /dev/null

echo "Stitching ..."
pair="$out/side_by_side.png --camera $out/camera.toml"
"$biseam" stitch $pair -o "$out/panorama.png" --show-seams "$out/seams.png"
"$biseam" stitch $pair -o "$out/plain.png" --no-search
"$biseam" view "$out/panorama.png" --show-seams "$out/seams.png" -o "$out/panorama.html"

"$biseam" contact-sheet -o "$out/contact_sheet.png" \
  "$out/truth.png" "$out/panorama.png" "$out/seams.png" "$out/plain.png" \
  --caption "Truth" \
  --caption "Seam search on" \
  --caption "Bands and the seams found" \
  --caption "Seam search off"

"$biseam" contact-sheet -o "$out/seam_detail.png" --crop 1290,330,330,420 --columns 3 --panel-width 660 \
  "$out/truth.png" "$out/panorama.png" "$out/plain.png" \
  --caption "Truth" --caption "Seam search on" --caption "Seam search off"

echo
echo "The truth is seen from the middle between the lenses, so no stitch can reach it.  A straight blend shows near things"
echo "twice, each half as strong; the search leads the seam around them: look at seam_detail.png.  PSNR, which rewards"
echo "blurring two pictures into one, can't tell this, so no figures stand here."
echo
echo "$out/side_by_side.png   the two fisheye pictures"
echo "$out/panorama.png       the panorama"
echo "$out/seams.png          the same with the overlap bands and the seams in them"
echo "$out/panorama.html      both to look around in: open it in a browser"
echo "$out/plain.png          stitched without seam search"
echo "$out/truth.png          what a perfect stitch would be"
echo "$out/contact_sheet.png  all four on one page"
echo "$out/seam_detail.png    one of the seams, enlarged"
