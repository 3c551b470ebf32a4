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

# The figures of the row "both seams": PSNR and SSIM.
seam_figures() {
  awk '/^both seams/ { print "PSNR " $3 " dB, SSIM " $5 " at the seams" }' "$1"
}
for kind in panorama plain; do
  "$biseam" compare "$out/truth.png" "$out/$kind.png" > "$out/$kind.txt"
done
"$biseam" contact-sheet -o "$out/contact_sheet.png" \
  "$out/truth.png" "$out/panorama.png" "$out/seams.png" "$out/plain.png" \
  --caption "Truth" \
  --caption "Seam search on: $(seam_figures "$out/panorama.txt")" \
  --caption "Bands and the seams found" \
  --caption "Seam search off: $(seam_figures "$out/plain.txt")"

"$biseam" contact-sheet -o "$out/seam_detail.png" --crop 1290,330,330,420 --columns 3 --panel-width 660 \
  "$out/truth.png" "$out/panorama.png" "$out/plain.png" \
  --caption "Truth" --caption "Seam search on" --caption "Seam search off"

echo
echo "Seam search on, against the true panorama:"
cat "$out/panorama.txt"
echo
echo "Seam search off:"
cat "$out/plain.txt"
echo
echo "The truth is seen from the middle between the lenses, so no stitch can reach it.  A straight blend shows near things"
echo "twice, each half as strong: closer to the truth on average, but not to the eye (seam_detail.png)."
echo
echo "$out/side_by_side.png   the two fisheye pictures"
echo "$out/panorama.png       the panorama"
echo "$out/seams.png          the same with the overlap bands and the seams in them"
echo "$out/panorama.html      both to look around in: open it in a browser"
echo "$out/plain.png          stitched without seam search"
echo "$out/truth.png          what a perfect stitch would be"
echo "$out/contact_sheet.png  all four on one page"
echo "$out/seam_detail.png    one of the seams, enlarged"
