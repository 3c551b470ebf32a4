/* The viewer's page as read-only data of the tool. */
    .section .rodata
    .global biseam_viewer_page
    .global biseam_viewer_page_end
    .balign 8
biseam_viewer_page:
    .incbin BISEAM_VIEWER_PAGE
biseam_viewer_page_end:
    .byte 0
    .section .note.GNU-stack, "", %progbits
