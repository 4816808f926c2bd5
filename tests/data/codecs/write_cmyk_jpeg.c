/* Writes raw CMYK (four bytes a pixel, from standard input) as a baseline JPEG with four
   components and no colour transform, which ImageMagick won't: it always writes YCCK.
       write_cmyk_jpeg WIDTH HEIGHT adobe|plain < in.cmyk > out.jpg
   "adobe" writes an APP14 Adobe segment (transform 0) and the values inverted, as Adobe's
   applications do; "plain" writes the values as they are, with no APP14 segment. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <jpeglib.h>

int main(int argc, char** argv) {
    if (argc != 4) return 2;
    int width = atoi(argv[1]), height = atoi(argv[2]), adobe = strcmp(argv[3], "adobe") == 0;
    size_t size = (size_t)width * height * 4;
    unsigned char* pixels = malloc(size);
    if (!pixels || fread(pixels, 1, size, stdin) != size) return 1;
    if (adobe)
        for (size_t i = 0; i < size; ++i) pixels[i] = (unsigned char)(255 - pixels[i]);
    struct jpeg_compress_struct cinfo;
    struct jpeg_error_mgr jerr;
    cinfo.err = jpeg_std_error(&jerr);
    jpeg_create_compress(&cinfo);
    jpeg_stdio_dest(&cinfo, stdout);
    cinfo.image_width = width;
    cinfo.image_height = height;
    cinfo.input_components = 4;
    cinfo.in_color_space = JCS_CMYK;
    jpeg_set_defaults(&cinfo);
    jpeg_set_colorspace(&cinfo, JCS_CMYK);
    jpeg_set_quality(&cinfo, 90, TRUE);
    cinfo.write_Adobe_marker = adobe;
    jpeg_start_compress(&cinfo, TRUE);
    while (cinfo.next_scanline < cinfo.image_height) {
        JSAMPROW row = pixels + (size_t)cinfo.next_scanline * width * 4;
        jpeg_write_scanlines(&cinfo, &row, 1);
    }
    jpeg_finish_compress(&cinfo);
    jpeg_destroy_compress(&cinfo);
    free(pixels);
    return 0;
}
