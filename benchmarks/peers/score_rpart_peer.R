# Scores cases by a tree of rpart: Rscript score_rpart_peer.R FILE CASES DEPTH LEAF SURROGATES SCORED
# The tree is grown on all cases and scores the first SCORED of them. Prints lines of a name and
# nanoseconds per case, the smaller of two runs; the first one says how large the tree is. The file is
# described in score_peer.cc.

suppressPackageStartupMessages(library(rpart))
arguments <- commandArgs(TRUE)
cases <- as.integer(arguments[2])
numbers <- as.integer(arguments[3:6])

file <- file(arguments[1], "rb")
data <- as.data.frame(matrix(readBin(file, "double", cases * 21), cases))
close(file)
names(data) <- c(paste0("x", 0:19), "y")
data[is.na(data)] <- NA
data$y <- factor(as.integer(data$y > 0))

control <- rpart.control(maxdepth = numbers[1], minbucket = numbers[2], minsplit = 2 * numbers[2],
                         maxsurrogate = numbers[3], usesurrogate = 2, maxcompete = 0, cp = -1,
                         xval = 0)
fit <- rpart(y ~ ., data, control = control, method = "class")
cat(sprintf("nodes %d\n", nrow(fit$frame)))
scored <- data[seq_len(numbers[4]), ]
taken <- min(replicate(2, system.time(predict(fit, scored, type = "vector"))[["elapsed"]]))
cat(sprintf("predict_double %.2f\n", taken * 1e9 / nrow(scored)))
